// panelkit views: the About page: one row per package with its licence files, an opened file's text under it.
#include "views/About.h"

#include "web/Application.h"

#include <Poco/URI.h>

namespace panelkit::views {

namespace {

std::string PackageOf(const data::ShellOutput::Section& section)
{
    return section.title.substr(0, section.title.find('/'));
}

std::string FileOf(const data::ShellOutput::Section& section)
{
    return section.title.substr(section.title.find('/') + 1);
}

// A name as one segment of a link's path.
std::string Segment(const std::string& name)
{
    std::string encoded;
    Poco::URI::encode(name, "?#/;&=", encoded);
    return encoded;
}

}  // namespace

void About::render_page()
{
    const auto& sections = page_.sections;
    out_ << "<table class=\"oss_notices\">";
    for (std::size_t first = 0; first < sections.size();) {
        const std::string package = PackageOf(sections[first]);
        std::size_t end = first + 1;
        while (end < sections.size() && PackageOf(sections[end]) == package)
            ++end;
        _Row(package, first, end);
        first = end;
    }
    out_ << "</table>\n";
}

void About::_Row(const std::string& package, std::size_t first, std::size_t end)
{
    out_ << "<tr id=\"";
    Esc(package);
    out_ << "\"><td><b>";
    Esc(package);
    out_ << "</b><ul class=\"ossnav\">";
    for (std::size_t i = first; i < end; ++i) {
        const auto& section = page_.sections[i];
        const std::string file = FileOf(section);
        out_ << "<li><i><a class=\"ossnav\" href=\"";
        Esc(app_.url("/settings/about2", {Segment(package), Segment(file)}) + "#" + Segment(package));
        out_ << "\">";
        Esc(file);
        out_ << "</a></i>";
        if (!section.output.empty()) {
            out_ << "<pre>";
            Esc(section.output);
            out_ << "</pre>";
        }
        out_ << "</li>";
    }
    out_ << "</ul></td></tr>\n";
}

}  // namespace panelkit::views
