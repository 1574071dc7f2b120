#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// A new empty folder for the files of one test; it goes with all that is in it.
class ClTempFolder
{
public:
    ClTempFolder() : m_sPath(testing::TempDir() + "kormelin-XXXXXX")
    {
        if (mkdtemp(m_sPath.data()) == nullptr)
        {
            throw std::filesystem::filesystem_error("mkdtemp", m_sPath,
                                                    std::error_code(errno, std::generic_category()));
        }
    }
    ClTempFolder(const ClTempFolder&) = delete;
    ClTempFolder& operator=(const ClTempFolder&) = delete;
    ~ClTempFolder()
    {
        std::error_code cIgnored;
        std::filesystem::remove_all(m_sPath, cIgnored);
    }

    const std::string& Path() const { return m_sPath; } ///< without a separator at its end
    std::string File(const char* szName) const { return m_sPath + "/" + szName; }

private:
    std::string m_sPath;
};

/// The whole of a file; empty if there is none.
inline std::vector<unsigned char> FileBytes(const std::string& sName)
{
    std::ifstream cFile(sName, std::ios::binary);
    return {std::istreambuf_iterator<char>(cFile), {}};
}

inline void WriteFileBytes(const std::string& sName, const std::vector<unsigned char>& aBytes)
{
    std::ofstream cFile(sName, std::ios::binary);
    cFile.write(reinterpret_cast<const char*>(aBytes.data()), static_cast<std::streamsize>(aBytes.size()));
    EXPECT_TRUE(cFile.flush());
}

/// Files that this process has open: a test compares the number before and after.
inline long OpenFiles()
{
    long nCount = 0;
    for (const auto& cEntry : std::filesystem::directory_iterator("/proc/self/fd"))
    {
        nCount += cEntry.path().empty() ? 0 : 1;
    }
    return nCount;
}
