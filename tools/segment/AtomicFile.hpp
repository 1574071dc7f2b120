#pragma once

#include "Picture.hpp"

#include <cstdint>
#include <string>

namespace SegmentTool
{
/// Errors: ClPictureError -202 if a file of this name is there that does not carry the fingerprint, see ImageFile.hpp.
void DemandMayWrite(const std::string& sPath, std::uint64_t nFingerprint);

/// Writes a file that appears under its name as a whole or not at all, whenever the process ends: it grows without a
/// name where the file system has such files, else under a hidden temporary name beside the final one.
/// A file that is there is replaced only if it carries the fingerprint.
/// Errors, after which nothing of the file is left: those of DemandMayWrite; ClPictureError -202 for a name that is too
/// long; ClRunError, exit code 4, with the reason of the file system for everything else.
void WriteAtomically(const std::string& sPath, const Bytes_t& aBytes, std::uint64_t nFingerprint);

/// Makes the folder and those above it, if they are not there. Errors: ClRunError, exit code 4.
void MakeFolders(const std::string& sPath);
} // namespace SegmentTool
