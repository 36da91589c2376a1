// What scripts/mutants builds into the mutated code: which mutant is on, and which are reached.
#pragma once

#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace mutants {

/// The mutant that is on, and a byte for each that is reached. Both are found before any test begins: tests
/// watch what the program asks of the system.
struct State {
    int active = 0;
    unsigned char* reached = nullptr;

    State() {
        const char* number = std::getenv("OZ_MUTANT");
        active = number != nullptr ? std::atoi(number) : 0;
        const char* file = std::getenv("OZ_MUTANTS_REACHED");
        const int descriptor = file != nullptr ? ::open(file, O_RDWR | O_CLOEXEC) : -1;
        if (descriptor >= 0) {
            void* memory = ::mmap(nullptr, 65536, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
            reached = memory != MAP_FAILED ? static_cast<unsigned char*>(memory) : nullptr;
            ::close(descriptor);
        }
    }
};
inline const State state;

inline bool on(int id) {
    if (__builtin_expect(state.reached != nullptr, 0)) {
        state.reached[id] = 1;
    }
    return __builtin_expect(state.active == id, 0);
}
inline bool turned(int id, bool value) {
    return on(id) != value;
}
inline bool always(int id, bool value) {
    return on(id) || value;
}
inline bool never(int id, bool value) {
    return !on(id) && value;
}
template <class T>
T moved(int id, T value) {
    return on(id) ? static_cast<T>(value + 1) : value;
}
template <class... Parts>
bool all(int id, const Parts&... parts) {
    return on(id) ? (parts() || ...) : (parts() && ...);
}
template <class... Parts>
bool any(int id, const Parts&... parts) {
    return on(id) ? (parts() && ...) : (parts() || ...);
}
template <class A, class B>
bool equal(int id, const A& a, const B& b) {
    return on(id) ? a != b : a == b;
}
template <class A, class B>
bool unequal(int id, const A& a, const B& b) {
    return on(id) ? a == b : a != b;
}
template <class A, class B>
bool less(int id, const A& a, const B& b) {
    return on(id) ? a <= b : a < b;
}
template <class A, class B>
bool most(int id, const A& a, const B& b) {
    return on(id) ? a < b : a <= b;
}
template <class A, class B>
bool more(int id, const A& a, const B& b) {
    return on(id) ? a >= b : a > b;
}
template <class A, class B>
bool least(int id, const A& a, const B& b) {
    return on(id) ? a > b : a >= b;
}

} // namespace mutants
