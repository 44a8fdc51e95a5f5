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

    /// A table under the prefix with its columns, in the order they are written; `what` names it in the log.
    Table(std::string prefix, std::vector<std::string> columns, std::string what = "");

    /// Every row found under the prefix, by row name in byte order; a row missing a column shows it empty.
    /// A key holding nothing usable (an empty text, an int 0) is skipped and logged as an error.
    std::map<std::string, Row> Load() const;
    /// Writes the row's columns in order, stopping at the first failed write.
    bool Write(const std::string& row, const Row& values) const;
    /// Deletes every column of the row (a row missing one goes all the same); false when a delete failed.
    bool Remove(const std::string& row) const;

private:
    std::string prefix_;
    std::vector<std::string> columns_;
    std::string what_;
};

}  // namespace panelkit::page
