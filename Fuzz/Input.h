#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// One input, as a fuzzer looks at it; each fuzzer defines it. Valid during the call only.
void readInput(std::string_view bytes);

/// The entry that the fuzzing engine calls.
extern "C" inline __attribute__((used)) int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    readInput({reinterpret_cast<const char*>(data), size});
    return 0;
}
