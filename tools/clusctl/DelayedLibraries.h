// DLLs that a command loads, not the start of the program: help and version come without them.
#ifndef CLUSCTL_DELAYEDLIBRARIES_H
#define CLUSCTL_DELAYEDLIBRARIES_H

// Loads the library and the cluster API, before anything of them is called. Throws Failure, which names what is
// missing. A function that they lack ends the program with a message when it is called.
void LoadLibraries();

#endif
