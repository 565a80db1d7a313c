#pragma once

#include <string>
#include <string_view>

/// Pieces of a page in HTML that is well-formed XML as well.

/// Text between tags or in quotes. A byte that belongs to no UTF-8 becomes U+FFFD, a control character its picture
/// (U+2400 and following).
std::string EscapeHtml(std::string_view text);

/// A number with so many decimals; what rounds to 0 has no sign.
std::string FormatDecimals(double number, int decimals);

/// The address of a picture that is part of the page, from the bytes of its JPEG file.
std::string FormatJpegAddress(std::string_view jpeg);

/// Cells of a table: of its heading, at the beginning of a row, and all others. The content is HTML.
std::string FormatColumnHeading(const std::string& content);
std::string FormatRowHeading(const std::string& content);
std::string FormatCell(const std::string& content);

/// A table below its caption, which scrolls where it is wider than the page. All arguments are HTML; the caption is
/// text.
std::string FormatTable(const std::string& caption, const std::string& headings, const std::string& rows);
