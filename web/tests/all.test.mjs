// One file for node's test runner, so that everything runs in one process, one test after the other.
import './panel.mjs';
import './access.mjs';
