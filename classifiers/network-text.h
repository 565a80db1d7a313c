#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Holds the text of a saved network against what the neural classifier can have saved: layers that are fully
/// connected, one output, every neuron and every connection present and finite. The library's own reader trusts the
/// counts and the indices in the text and would write past its arrays.
///
/// Returns the number of inputs, or nothing if the text is anything else.
std::optional<std::uint32_t> ParseNetwork(std::string_view text);
