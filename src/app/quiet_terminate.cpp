// What ends the program when an exception escapes everything. libstdc++'s own handler prints
// the exception's demangled type to a console that a windowed program does not have, and
// brings in the demangler, a twentieth of the exe, for it. Every window procedure, callback
// and thread catches and logs what it throws, so reaching this is a defect: end at once.
#include <cstdlib>

namespace __gnu_cxx {
void __verbose_terminate_handler() {
    std::abort();
}
} // namespace __gnu_cxx
