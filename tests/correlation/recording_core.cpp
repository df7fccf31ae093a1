// The tests of this layer talk to the same recording Core as those of the layer below.
#include "properties/recording_core.cpp"
