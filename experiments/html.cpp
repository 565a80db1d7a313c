#include "experiments/html.h"

#include <algorithm>

#include <QByteArray>
#include <QString>

#include "base/format-string.h"
#include "experiments/repaired-text.h"

std::string EscapeHtml(std::string_view text) {
  QString decoded = RepairText(text);
  // Unit by unit of UTF-16: a character beyond U+FFFF is two surrogates, and none of the cases below takes one of them.
  for (QChar& character : decoded) {
    constexpr char16_t kPictures = 0x2400;
    constexpr char16_t kPictureOfDelete = 0x2421;
    const char16_t code = character.unicode();
    // XML 1.0 (section 2.2) allows TAB, line feed and carriage return alone of these, and makes blanks of them in
    // attributes. Unicode has pictures for the control characters of ASCII only; those from U+0080 on, and what is no
    // character, share the replacement.
    if (code < ' ') {
      character = QChar(static_cast<char16_t>(kPictures + code));
    } else if (code == 0x7f) {
      character = QChar(kPictureOfDelete);
    } else if ((code > 0x7f && code < 0xa0) || code >= 0xfffe) {
      character = QChar(QChar::ReplacementCharacter);
    }
  }
  // An apostrophe stays as it is: attributes of the page must stand in double quotes.
  return decoded.toHtmlEscaped().toStdString();
}

std::string FormatDecimals(double number, int decimals) {
  std::string text = FormatString("%.*f", decimals, number);
  // "-0.000" would read as a difference with a direction.
  const bool isZero = text.find_first_of("123456789") == std::string::npos;
  return isZero && text.starts_with('-') ? text.substr(1) : text;
}

std::string FormatJpegAddress(std::string_view jpeg) {
  const QByteArray bytes(jpeg.data(), static_cast<qsizetype>(jpeg.size()));
  // A data URL (RFC 2397), so that the page stays one file.
  return "data:image/jpeg;base64," + bytes.toBase64().toStdString();
}

std::string FormatColumnHeading(const std::string& content) {
  // The scope tells a screen reader which cells a heading is for (WCAG 2, technique H63).
  return "<th scope=\"col\">" + content + "</th>";
}

std::string FormatRowHeading(const std::string& content) {
  return "<th scope=\"row\">" + content + "</th>";
}

std::string FormatCell(const std::string& content) {
  return "<td>" + content + "</td>";
}

std::string FormatTable(const std::string& caption, const std::string& headings, const std::string& rows) {
  const std::string text = EscapeHtml(caption);
  // The keyboard reaches what scrolls.
  // WAI-ARIA wants a name for every region; that of its table will do.
  return "<div class=\"wide\" role=\"region\" tabindex=\"0\" aria-label=\"" + text + "\"><table>\n<caption>" + text +
         "</caption>\n<thead><tr>" + headings + "</tr></thead>\n<tbody>\n" + rows + "</tbody>\n</table></div>\n";
}
