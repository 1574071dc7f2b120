#pragma once

#include <filesystem>
#include <set>
#include <string>

/// The classes of the operators, by the headers of their folder: every module but the frames. szProject: the folder of
/// the project.
inline std::set<std::string> OperatorsOfTheFolder(const char* szProject)
{
    const std::set<std::string> aFrames = {"Ip1to1Base", "Ip2to1Base", "IpFilterBase", "IpLookUpTableBase"};
    std::set<std::string> aOperators;
    for (const auto& cEntry :
         std::filesystem::directory_iterator(std::filesystem::path(szProject) / "src/RDImageProcessing"))
    {
        const std::filesystem::path cFile = cEntry.path().filename();
        const std::string szModule = cFile.stem().string();
        if (cFile.extension() == ".hpp" && szModule.compare(0, 2, "Ip") == 0 && aFrames.count(szModule) == 0)
        {
            aOperators.insert("Cl" + szModule);
        }
    }
    return aOperators;
}
