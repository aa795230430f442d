#pragma once

#include "editor/model/document/Document.h"

#include <optional>
#include <string>

/// Why the curves change nothing, and what would help.
struct CurveHindrance {
    std::string text;
    std::string cure; ///< what a button says that sets the value
    std::string name; ///< of the value
    double number;
};

/// The first reason at the document's time; empty where curves count.
std::optional<CurveHindrance> findCurveHindrance(Document const& document);

/// A sentence about keys that the tables of the curves miss; empty where there are none.
std::string describeMissedKeys(Document const& document);
