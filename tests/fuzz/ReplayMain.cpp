// Feeds a fuzz target with the inputs that it is given, files or folders of files, once each: the
// main function of the targets where no libFuzzer is.

#include "FuzzTarget.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" [[gnu::weak]] int LLVMFuzzerInitialize(int* argc, char*** argv);

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* /*data*/, std::size_t size,
                                        std::size_t /*capacity*/)
{
    return size;
}

namespace
{

namespace fs = std::filesystem;

std::vector<fs::path> inputsOf(const fs::path& place)
{
    if (!fs::is_directory(place))
    {
        return {place};
    }
    std::vector<fs::path> inputs;
    for (const fs::directory_entry& entry : fs::directory_iterator(place))
    {
        inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

void replay(const fs::path& input)
{
    // Told first: after a crash the last one told is the culprit.
    std::printf("%s\n", input.c_str());
    std::fflush(stdout);
    std::ifstream file(input, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    // A copy of exactly that size, so that a sanitizer sees each byte read behind it.
    const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    (void)LLVMFuzzerTestOneInput(data.data(), data.size());
}

} // namespace

int main(int argc, char** argv)
{
    if (LLVMFuzzerInitialize != nullptr)
    {
        (void)LLVMFuzzerInitialize(&argc, &argv);
    }
    int count = 0;
    for (int index = 1; index < argc; ++index)
    {
        for (const fs::path& input : inputsOf(argv[index]))
        {
            replay(input);
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
