// panelkit pages: the About page: the licence notices of the device's open-source packages, one of them opened.
#pragma once

#include "page/Page.h"

#include <map>
#include <set>
#include <string>

namespace panelkit::pages {

/// One licence file of a package. Files are ordered by name without regard to case, so that two
/// names differing only in case count as one.
struct OSSFile {
    /// The file's name in its package's folder.
    std::string name;
    /// The file's text; empty unless it was asked for.
    std::string text;

    /// The case-insensitive order of the names.
    bool operator<(const OSSFile& other) const;
};

/// The packages by name, each with its licence files in their order.
using OSSPackages = std::map<std::string, std::set<OSSFile>>;

/// Adds every package folder of dir that holds licence files (regular files or links whose names do
/// not begin with "."); nothing when dir cannot be read.
void GetOSSFiles(const std::string& dir, OSSPackages& out);
/// "/settings/about": the packages and their licence files.
page::Page About();
/// "/settings/about/{package}/{file}": the same list with that file's text under its name.
page::Page AboutFile();

}  // namespace panelkit::pages
