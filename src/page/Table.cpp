// panelkit page: a table of the store kept as rows under a key prefix ("net/portfwd/tcp/00080/d_ip").
#include "page/Table.h"

#include "util/Pardb.h"
#include "web/Log.h"

#include <cstdlib>

namespace panelkit::page {

Table::Table(std::string prefix, std::vector<std::string> columns, std::string what)
    : prefix_(std::move(prefix)), columns_(std::move(columns)), what_(std::move(what))
{
}

std::map<std::string, Table::Row> Table::Load() const
{
    std::map<std::string, Row> rows;
    const std::string folder = prefix_ + "/";
    for (const auto& name : util::Pardb::GetList(prefix_)) {
        // The store may list full key names or the names below the prefix.
        const std::string rest = name.compare(0, folder.size(), folder) == 0 ? name.substr(folder.size()) : name;
        const auto slash = rest.find('/');
        if (slash == std::string::npos)
            continue;
        const std::string row = rest.substr(0, slash);
        const std::string column = rest.substr(slash + 1);
        std::string value;
        PARDB_PAR_T type = PARDB_PAR_UNKNOWN;
        util::Pardb::Get(folder + rest, value, type);
        if (value.empty() || (type == PARDB_PAR_INT && std::atoi(value.c_str()) == 0)) {
            PK_ERROR() << what_ << (what_.empty() ? "" : ": ") << "Bad PARDB parameter " << folder << rest;
            continue;
        }
        Row& values = rows[row];
        for (const auto& known : columns_)
            values.emplace(known, "");
        values[column] = value;
    }
    return rows;
}

bool Table::Write(const std::string& row, const Row& values) const
{
    for (const auto& column : columns_) {
        const auto value = values.find(column);
        if (!util::Pardb::Set(prefix_ + "/" + row + "/" + column, value == values.end() ? "" : value->second))
            return false;
    }
    return true;
}

bool Table::Remove(const std::string& row) const
{
    bool removed = true;
    for (const auto& column : columns_)
        removed = util::Pardb::Delete(prefix_ + "/" + row + "/" + column) && removed;
    return removed;
}

}  // namespace panelkit::page
