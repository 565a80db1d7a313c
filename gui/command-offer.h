#pragma once

#include <string>

#include <boost/function.hpp>

using TCommandTaker = boost::function<void(const std::string&)>;

/// Writes a command into the command line for the user to run, change or drop. Without a window nothing happens.
void OfferCommand(const std::string& line);

/// Makes its owner the one who gets offered commands, for its own lifetime. Scopes nest.
class TCommandOfferScope {
 public:
  explicit TCommandOfferScope(const TCommandTaker& taker);
  ~TCommandOfferScope();
  TCommandOfferScope(const TCommandOfferScope&) = delete;
  TCommandOfferScope& operator=(const TCommandOfferScope&) = delete;

 private:
  TCommandTaker taker;
  const TCommandOfferScope* outer;

  friend void OfferCommand(const std::string& line);
};
