#pragma once

#include <utility>

/// Runs fn where nobody can be told that it failed: in a destructor, or beside a failure that is being told already.
template <class Fn> void IgnoreFailure(Fn&& fn) noexcept
{
    try
    {
        std::forward<Fn>(fn)();
    }
    catch (...)
    {
    }
}
