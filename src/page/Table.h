// panelkit page: a table of the store kept as rows under a key prefix ("net/portfwd/tcp/00080/d_ip").
#pragma once

#include <map>
#include <string>
#include <vector>

namespace panelkit::page {

/// Rows under a prefix, each row a folder of column keys: prefix + "/" + row + "/" + column.
class Table {
public:
    /// One row's values by column name.
    using Row = std::map<std::string, std::string>;

    /// A table under the prefix with its columns, in the order they are written.
    Table(std::string prefix, std::vector<std::string> columns);

    /// Every row found under the prefix, by row name in byte order; a row missing a column shows it empty.
    std::map<std::string, Row> Load() const;
    /// Writes the row's columns in order, stopping at the first failed write.
    bool Write(const std::string& row, const Row& values) const;
    /// Deletes the row's columns in order, stopping at the first failure.
    bool Remove(const std::string& row) const;

private:
    std::string prefix_;
    std::vector<std::string> columns_;
};

}  // namespace panelkit::page
