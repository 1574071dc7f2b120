#pragma once

// Files and surroundings for the tests of path operations.

#include "TempFolder.hpp"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

/// A folder of the test, whose path ends in a slash as that of a directory does.
class ClTestTree
{
public:
    const std::string& Path() const { return m_sPath; }
    std::string operator/(const std::string& sName) const { return m_sPath + sName; }

    /// Makes a file in the folder, and the folders above it; returns its whole name.
    std::string Write(const std::string& sName, const std::string& sContent) const
    {
        std::filesystem::create_directories(std::filesystem::path(m_sPath + sName).parent_path());
        WriteFileBytes(m_sPath + sName, {sContent.begin(), sContent.end()});
        return m_sPath + sName;
    }

    std::string Read(const std::string& sName) const
    {
        const std::vector<unsigned char> aBytes = FileBytes(m_sPath + sName);
        return std::string(aBytes.begin(), aBytes.end());
    }

private:
    ClTempFolder m_cFolder;
    std::string m_sPath = m_cFolder.Path() + "/";
};

/// Sets an environment variable, or removes it for null, while it lives.
class ClEnvironment
{
public:
    ClEnvironment(const char* szName, const char* szValue) : m_szName(szName)
    {
        if (const char* szOld = std::getenv(szName))
        {
            m_sOld = szOld;
        }
        Set(szValue);
    }
    ClEnvironment(const ClEnvironment&) = delete;
    ClEnvironment& operator=(const ClEnvironment&) = delete;
    ~ClEnvironment() { Set(m_sOld ? m_sOld->c_str() : nullptr); }

private:
    void Set(const char* szValue) { szValue != nullptr ? setenv(m_szName, szValue, 1) : unsetenv(m_szName); }

    const char* m_szName;
    std::optional<std::string> m_sOld;
};

/// Works in another directory while it lives.
class ClWorkingDirectory
{
public:
    explicit ClWorkingDirectory(const std::string& sPath) : m_cOld(std::filesystem::current_path())
    {
        std::filesystem::current_path(sPath);
    }
    ClWorkingDirectory(const ClWorkingDirectory&) = delete;
    ClWorkingDirectory& operator=(const ClWorkingDirectory&) = delete;
    ~ClWorkingDirectory()
    {
        std::error_code cIgnored;
        std::filesystem::current_path(m_cOld, cIgnored);
    }

private:
    std::filesystem::path m_cOld;
};
