#include "gui/command-offer.h"

namespace {

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
