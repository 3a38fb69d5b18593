// The start of test programs that tests also start as child processes.
#ifndef HARNESS_CHILDMAIN_H
#define HARNESS_CHILDMAIN_H

namespace harness {

// Behind "--child" the command line is the child's, which `child` gets; otherwise the tests are run.
int RunChildOrTests(int argc, char** argv, int (*child)(int argc, wchar_t** argv));

} // namespace harness

#endif
