#include "engine/var-list.h"

#include <algorithm>
#include <utility>

#include <boost/bind/bind.hpp>

#include "engine/var.h"

TVarList::TVarList() = default;

TVarList::~TVarList() {
  while (!variables.empty()) {
    Remove(variables.front()->GetName());
  }
}

TVar* TVarList::Find(const std::string& name) const {
  const auto found = std::find_if(variables.begin(), variables.end(),
                                  [&](const auto& variable) { return variable->GetName() == name; });
  return found == variables.end() ? nullptr : found->get();
}

void TVarList::Add(std::unique_ptr<TVar> variable) {
  variable->SetOutput(boost::bind(&TVarList::Print, this, boost::placeholders::_1));
  variables.push_back(std::move(variable));
}

void TVarList::Remove(const std::string& name) {
  const auto found = std::find_if(variables.begin(), variables.end(),
                                  [&](const auto& variable) { return variable->GetName() == name; });
  if (found == variables.end()) {
    return;
  }
  // `name` may be the variable's own string, so the variable goes last.
  const std::unique_ptr<TVar> removed = std::move(*found);
  variables.erase(found);
}

void TVarList::Print(const std::string& line) const {
  if (output) {
    output(line);
  }
}
