#pragma once

#include "Instance.h"

/// The curves of three channels for the tool, by the names of its curve inputs: those of the text
/// if it says anything, else those of the host's curve widget sampled at the places of the tool's
/// table. A channel that neither shapes is as in a new node. Throws ValueError for a text that
/// cannot be read.
NodeValues readCurves(ParamTable const& table, ParamHandle const& widget, std::string const& text,
                      OfxTime time);

/// Throws ValueError for a text that cannot be read.
void checkCurves(ParamTable const& table, std::string const& text);

/// Gives all three curves of the widget their default shape.
void resetWidget(ParamHandle const& widget);
