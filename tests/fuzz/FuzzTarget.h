#pragma once

#include <cstddef>
#include <cstdint>

// The names are libFuzzer's. NOLINTBEGIN(readability-identifier-naming)

/// What a fuzz target offers to the program that feeds it: libFuzzer, or the replay of a corpus.
///
/// Errors: a target ends the program when an input breaks a claim; it answers 0 otherwise.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Optional: once, before the first input.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

/// Optional: changes an input in place; answers its new size, which is capacity at most.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t capacity, unsigned int seed);

/// What libFuzzer offers to the former: one of its own changes. A replay changes nothing.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t capacity);

// NOLINTEND(readability-identifier-naming)
