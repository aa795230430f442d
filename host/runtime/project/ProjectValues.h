#pragma once

#include "runtime/values/HostValue.h"

#include <nlohmann/json.hpp>

/// A number as JSON, which knows finite ones only: "inf", "-inf" and "nan" are texts.
nlohmann::ordered_json numberToJson(double number);

/// A value's state as JSON.
nlohmann::ordered_json valueToJson(HostValue const& value);

/// The state of `value` that `json` describes; `value` itself stays as it is. `place` is where in
/// the project the JSON stands. Throws ProjectError naming the place.
ValueState valueFromJson(nlohmann::ordered_json const& json, HostValue const& value,
                         std::string const& place);
