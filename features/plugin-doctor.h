#pragma once

#include <string>

#include <boost/function.hpp>

/// Tries a plug-in library on made pictures, in processes of its own, and prints what it finds, one line each: what the
/// library says of itself, crashes, calls that take longer than `patienceMilliseconds`, steps beyond the memory that
/// it was given, elements never written, values that are not finite, different answers to the same picture, leaks, and
/// its time for a megapixel. True if nothing speaks against using it. Needs base::CanRunTrials().
bool CheckPlugin(const std::string& fileName, const boost::function<void(const std::string&)>& print,
                 int patienceMilliseconds = 10000);
