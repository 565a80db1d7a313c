#pragma once

#include <string_view>

#include <QString>

/// The text that names of files and tags stand for in a page or a record, which must be UTF-8 whatever the file system
/// allows: a byte that belongs to no UTF-8 becomes U+FFFD.
QString RepairText(std::string_view text);
