#pragma once

#include <string>
#include <string_view>

/// Names in files whose fields a blank or a TAB parts.

/// For the fields of runs and judgements: A-Z, a-z, 0-9 and - . _ ~ / stay, every other byte is written as %XX.
std::string EncodeName(std::string_view name);

/// The same with the slash encoded too.
std::string EncodeTag(std::string_view tag);

/// For the fields of tables: only TAB, line feed, carriage return and % are written as %XX.
std::string EncodeField(std::string_view field);

/// For the name of a set of features where blanks part the fields: blanks, control characters and % are written as %XX.
std::string EncodeSet(std::string_view set);

/// The bytes that an encoded text stands for. A % that no two hexadecimal digits follow stands for itself.
std::string Decode(std::string_view text);
