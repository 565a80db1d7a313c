#pragma once

#include <initializer_list>
#include <optional>
#include <string>

#include <QStringList>

class QCommandLineParser;

/// The arguments of a program, its name first. Nothing if one is not UTF-8, with the reason: the toolkit would put
/// other characters in their place, and a file of another name would be read or written.
std::optional<QStringList> TakeArguments(int argc, char** argv, std::string& reason);

/// Parses the arguments of a program whose options the parser has got already. False, with the reason, if they cannot
/// be taken or one of them is no option.
bool ParseArguments(QCommandLineParser& parser, int argc, char** argv, std::string& reason);

/// What is wrong with the values of options that name files or directories, or nothing. A name that begins with a dash
/// is most often the next option, whose own place was left without a value.
std::string FaultOfNames(const QCommandLineParser& parser, std::initializer_list<const char*> options);
