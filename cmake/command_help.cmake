# Writes the list of command words as one raw string of C++: -DLIST=input -DOUT=output.
file(READ "${LIST}" list)
file(WRITE "${OUT}" "R\"words(${list})words\"\n")
