#pragma once

#include "GuardedBytes.hpp"
#include "SlapRun.hpp"

#include <cstdint>
#include <stdexcept>
#include <vector>

/// Runs on inputs between guard pages that cannot be written and, where they are copied here, are gone when the results
/// are looked at.
class ClGuardedSlapRunner
{
public:
    explicit ClGuardedSlapRunner(long nMode, long nCoordinateOrigin = 0) : m_cRunner(nMode, nCoordinateOrigin) {}

    ClSlapRunResult Run(const ClReadOnlyBytes& cInput) { return m_cRunner.Run(cInput.Data(), cInput.Size()); }
    ClSlapRunResult RunWithoutSize(const ClReadOnlyBytes& cInput) { return m_cRunner.Run(cInput.Data(), 0); }

    /// The result of a copy that ends at the guard page. One at an odd address must have the same, otherwise
    /// std::runtime_error.
    ClSlapRunResult Run(const std::vector<std::uint8_t>& aBytes)
    {
        ClSlapRunResult cResult = Run(ClReadOnlyBytes(aBytes));
        if (!(cResult == Run(ClReadOnlyBytes(aBytes, EGuard::eOdd))))
        {
            throw std::runtime_error("the result depends on the address of the input");
        }
        return cResult;
    }

private:
    ClSlapRunner m_cRunner;
};
