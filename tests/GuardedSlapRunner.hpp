#pragma once

#include "GuardedBytes.hpp"
#include "SlapRun.hpp"

#include <cstdint>
#include <vector>

/// Runs on inputs at a guard page that cannot be written, and that are gone when the results are looked at.
class ClGuardedSlapRunner : public ClSlapRunner
{
public:
    using ClSlapRunner::ClSlapRunner;
    using ClSlapRunner::Run;
    ClSlapRunResult Run(const std::vector<std::uint8_t>& aBytes)
    {
        const ClReadOnlyBytes cInput(aBytes);
        return Run(cInput.Data(), cInput.Size());
    }
};
