#pragma once

#include <string>

class QString;

/// The one crossing between the engine's strings (UTF-8 bytes) and those of the toolkit. Bytes that are not UTF-8
/// become replacement characters on the screen.
QString ToQString(const std::string& text);
std::string FromQString(const QString& text);
