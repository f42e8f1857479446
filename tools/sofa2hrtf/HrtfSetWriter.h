// SPDX-License-Identifier: MIT
// Writes set files.
#pragma once

#include "HrtfConversion.h"

#include <filesystem>
#include <map>
#include <string>

namespace SofaTool {

/// The content of a ".hrtf" file.  @param attributes  of the SOFA file, whose authors are kept
std::string HrtfBytes(const ConvertedSet& set,
                      const std::map<std::string, std::string>& attributes);

/// Writes beside the file first and takes its place then: a file that was there stays whole
/// whatever happens.  Throws: tav::Exception with the name of the file.
void WriteWhole(const std::filesystem::path& file, const std::string& bytes);

}  // namespace SofaTool
