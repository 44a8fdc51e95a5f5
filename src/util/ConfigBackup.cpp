// panelkit util: the configuration listing of the whole store, and a listing read back and restored.
#include "util/ConfigBackup.h"

#include "util/Pardb.h"
#include "web/Log.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <set>
#include <sstream>

namespace panelkit::util {

namespace {

// The store's type numbers: 0 an int, 1 a float, anything else a string.
const int kInt = 0;
const int kFloat = 1;
const int kString = 2;

char Letter(PARDB_PAR_T type)
{
    switch (static_cast<int>(type)) {
    case kInt:
        return 'i';
    case kFloat:
        return 'f';
    default:
        return 's';
    }
}

PARDB_PAR_T TypeOf(char letter)
{
    return static_cast<PARDB_PAR_T>(letter == 'i' ? kInt : letter == 'f' ? kFloat : kString);
}

bool IsWholeNumber(const std::string& text)
{
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0])))
        return false;
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text.c_str(), &end, 10);
    return *end == '\0' && errno == 0 && number >= INT_MIN && number <= INT_MAX;
}

bool IsNumber(const std::string& text)
{
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0])))
        return false;
    char* end = nullptr;
    errno = 0;
    const float number = std::strtof(text.c_str(), &end);
    return *end == '\0' && errno == 0 && std::isfinite(number);
}

// The reason a line is not a listing line, "" when it is one; the entry it holds.
std::string ParseLine(const std::string& line, ConfigBackup::Entry& entry)
{
    if (line[0] != '"')
        return "a line must begin with a double quote";
    const auto keyEnd = line.find('"', 1);
    if (keyEnd == std::string::npos)
        return "the key has no closing double quote";
    if (keyEnd == 1)
        return "the key is empty";
    if (line.compare(keyEnd + 1, 2, ",\"") != 0)
        return "the key must be followed by a comma and a double quote";
    const auto valueStart = keyEnd + 3;
    const auto valueEnd = line.rfind("\", ");
    if (valueEnd == std::string::npos || valueEnd < valueStart)
        return "the value must end with a double quote, a comma and a blank";
    const std::string type = line.substr(valueEnd + 3);
    if (type != "i" && type != "f" && type != "s")
        return "the type must be i, f or s";
    entry.key = line.substr(1, keyEnd - 1);
    entry.value = line.substr(valueStart, valueEnd - valueStart);
    entry.type = type[0];
    if (entry.type == 'i' && !IsWholeNumber(entry.value))
        return "the value of " + entry.key + " is not a whole number";
    if (entry.type == 'f' && !IsNumber(entry.value))
        return "the value of " + entry.key + " is not a number";
    return "";
}

}  // namespace

std::string ConfigBackup::Line(const Entry& entry)
{
    return "\"" + entry.key + "\",\"" + entry.value + "\", " + entry.type + "\n";
}

std::string ConfigBackup::Listing()
{
    std::string listing;
    for (const auto& key : Pardb::GetList("")) {
        std::string value;
        PARDB_PAR_T type{};
        if (!Pardb::Get(key, value, type)) {
            PK_ERROR() << "FAIL pardblib::getPar \"" << key << "\"";
            break;
        }
        listing += Line({key, value, Letter(type)});
    }
    return listing;
}

bool ConfigBackup::Parse(const std::string& text, std::vector<Entry>& entries, std::string& error)
{
    entries.clear();
    std::set<std::string> seen;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        // A listing edited on another system may end its lines with CR LF.
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty())
            continue;
        Entry entry;
        std::string reason = ParseLine(line, entry);
        if (reason.empty() && !seen.insert(entry.key).second)
            reason = "the key " + entry.key + " is listed twice";
        if (!reason.empty()) {
            error = "Line " + std::to_string(number) + ": " + reason;
            entries.clear();
            return false;
        }
        entries.push_back(std::move(entry));
    }
    return true;
}

bool ConfigBackup::Restore(const std::vector<Entry>& entries, std::size_t& changed)
{
    std::vector<Pardb::Entry> values;
    values.reserve(entries.size());
    for (const auto& entry : entries)
        values.push_back({entry.key, entry.value, TypeOf(entry.type)});
    return Pardb::Update(values, changed);
}

}  // namespace panelkit::util
