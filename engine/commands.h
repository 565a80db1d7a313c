#pragma once

#include <memory>

class TFunction;

// Commands on the workbench itself.
std::unique_ptr<TFunction> MakeExecuteScript();
std::unique_ptr<TFunction> MakeReset();
