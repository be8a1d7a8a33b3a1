// Lets the memory that the loaded library asks for be refused, from outside: its table of imported functions leads to
// the functions of this host.
#ifndef QXBC_TESTS_FAILING_MEMORY_H
#define QXBC_TESTS_FAILING_MEMORY_H

namespace FailingMemory {

// Takes the place of every function by which the library allocates. False when one of them is not found: nothing would
// be refused.
bool Install(void* library);

// The `number`th request from now is refused, the first being 1, and all later ones as well with `andAllLater`.
// Number 0 refuses nothing.
void Refuse(unsigned int number, bool andAllLater);

// Whether one was refused since.
bool HasRefused();

} // namespace FailingMemory

#endif
