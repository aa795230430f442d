#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"
#include "editor/model/document/Recovery.h"
#include "editor/model/picture/Plate.h"
#include "editor/view/window/MessageBar.h"

#include <QTimer>
#include <deque>

class FileActions;

/// Has unsaved work set aside within a second of a change, and offers what earlier programs left.
class RecoveryKeeper : public QObject {
    Q_OBJECT

public:
    RecoveryKeeper(Document& editedDocument, Plate& shownPlate, FileActions& fileActions,
                   MessageBar& messageBar, QObject* parent);

    /// Says what was left and what can be done with it, one after the other.
    void offerLeft();

    /// The program ends at once, and what is unsaved is to be offered again.
    void keepNow();

    /// Nothing is to be kept: it ends in order.
    void end();

private:
    void plan();
    void offerNext();
    void restore();
    void discard();

    Document& document;
    Plate& plate;
    FileActions& files;
    MessageBar& bar;
    Recovery recovery;
    QTimer pause; ///< between a change and keeping it
    std::deque<LeftWork> left;
    bool isKept = false;
    CbFunction<ValueChange const> changed{[this](ValueChange const&) { plan(); }};
    CbFunction<ProjectFile const> fileChanged{[this](ProjectFile const&) { plan(); }};
};
