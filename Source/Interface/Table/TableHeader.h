#pragma once

#include <string>

/// What stands above a table's first section: a title and a comment below it.
struct TableHeader {
    std::string title;
    std::string comment;
    bool operator==(const TableHeader&) const = default;
};
