// panelkit page: a table of the store kept as rows under a key prefix ("net/portfwd/tcp/00080/d_ip").
#include "page/Table.h"

#include "util/Pardb.h"

namespace panelkit::page {

Table::Table(std::string prefix, std::vector<std::string> columns)
    : prefix_(std::move(prefix)), columns_(std::move(columns))
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
        Row& values = rows[row];
        for (const auto& known : columns_)
            values.emplace(known, "");
        values[column] = util::Pardb::GetString(folder + row + "/" + column);
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
    for (const auto& column : columns_)
        if (!util::Pardb::Delete(prefix_ + "/" + row + "/" + column))
            return false;
    return true;
}

}  // namespace panelkit::page
