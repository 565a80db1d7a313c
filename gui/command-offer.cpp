#include "gui/command-offer.h"

namespace {

// No lock: windows and commands live in the toolkit's one thread. Scopes must end in the reverse order of their
// beginning, or a scope that is gone would be put back.
const TCommandOfferScope* innermost = nullptr;

}  // namespace

TCommandOfferScope::TCommandOfferScope(const TCommandTaker& theTaker) : taker(theTaker), outer(innermost) {
  innermost = this;
}

TCommandOfferScope::~TCommandOfferScope() {
  innermost = outer;
}

void OfferCommand(const std::string& line) {
  if (innermost != nullptr) {
    innermost->taker(line);
  }
}
