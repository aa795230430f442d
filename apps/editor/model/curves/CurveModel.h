#pragma once

#include "editor/model/curves/CurveEditor.h"
#include "editor/model/curves/CurveHistogram.h"
#include "editor/model/curves/CurveLines.h"
#include "editor/model/curves/CurveMarks.h"

/// What the curve editor edits and shows of a document and a plate. User-interface thread.
struct CurveModel {
    CurveModel(Document& editedDocument, Plate& plate, Picks& shownPicks)
        : document(editedDocument), picks(shownPicks), editor(document), lines(document),
          histogram(document, plate), marks(document, picks)
    {
    }

    CurveDisplay getDisplay() const { return readCurveDisplay(document.getLink()); }
    void setDisplay(CurveDisplay const& display) { writeCurveDisplay(document, display); }

    Document& document;
    Picks& picks;
    CurveEditor editor;
    CurveLines lines;
    CurveHistogram histogram;
    CurveMarks marks;
};
