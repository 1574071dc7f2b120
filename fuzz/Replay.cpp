// Runs a target over files, and over the files of folders, without a fuzzer: for the corpus, and for a crash at hand.

#include "ByteSource.hpp"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
std::vector<std::filesystem::path> InputsOf(int nArguments, char** aszArguments)
{
    std::vector<std::filesystem::path> aInputs;
    for (int i = 1; i < nArguments; ++i)
    {
        if (!std::filesystem::is_directory(aszArguments[i]))
        {
            aInputs.emplace_back(aszArguments[i]);
            continue;
        }
        for (const auto& cEntry : std::filesystem::directory_iterator(aszArguments[i]))
            aInputs.push_back(cEntry.path());
    }
    std::sort(aInputs.begin(), aInputs.end());
    return aInputs;
}
} // namespace

int main(int nArguments, char** aszArguments)
{
    try
    {
        const auto aInputs = InputsOf(nArguments, aszArguments);
        for (const auto& cInput : aInputs)
        {
            std::ifstream cFile(cInput, std::ios::binary);
            const std::string sBytes{std::istreambuf_iterator<char>(cFile), {}};
            if (!cFile.is_open() || cFile.bad()) throw std::runtime_error(cInput.string() + ": cannot be read");
            std::fprintf(stderr, "%s\n", cInput.c_str()); // the last one printed is the one that failed
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(sBytes.data()), sBytes.size());
        }
        std::printf("%zu inputs\n", aInputs.size());
        return aInputs.empty() ? 2 : 0;
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
