#include "engine/var-list.h"

#include <algorithm>
#include <utility>

#include <boost/bind/bind.hpp>

#include "engine/var.h"

TVarList::TVarList() = default;

TVarList::~TVarList() {
  // In the order of addition: a vector may destroy its elements in any order, and what variables print on their end
  // should not depend on that.
  byName.clear();
  for (auto& variable : variables) {
    variable.reset();
  }
}

TVar* TVarList::Find(const std::string& name) const {
  const auto found = byName.find(name);
  return found == byName.end() ? nullptr : found->second.first;
}

void TVarList::Add(std::unique_ptr<TVar> variable) {
  variable->SetOutput(boost::bind(&TVarList::Print, this, boost::placeholders::_1));
  // Without memory for either place the variable is in none.
  variables.push_back(std::move(variable));
  TVar* added = variables.back().get();
  try {
    // Of namesakes the first one counts, as in a search from the front.
    ++byName.try_emplace(added->GetName(), TNamed{added, 0}).first->second.count;
  } catch (...) {
    variables.pop_back();
    throw;
  }
}

void TVarList::Remove(const std::string& name) {
  const auto named = byName.find(name);
  if (named == byName.end()) {
    return;
  }
  const auto isNamed = [&](const auto& variable) { return variable->GetName() == named->first; };
  const auto first = std::find_if(variables.begin(), variables.end(), isNamed);
  // `name` may be the variable's own string, so the variable goes last.
  const std::unique_ptr<TVar> removed = std::move(*first);
  const auto behind = variables.erase(first);
  if (--named->second.count == 0) {
    byName.erase(named);
  } else {
    // The next of that name. Seldom enough that a walk through the rest will do.
    named->second.first = std::find_if(behind, variables.end(), isNamed)->get();
  }
}

void TVarList::Print(const std::string& line) const {
  if (output) {
    output(line);
  }
}
