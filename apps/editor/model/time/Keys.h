#pragma once

#include "editor/model/document/Document.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// The keyframes of a document's values, curves too: where they are, and edits of several at once,
/// each one step. User-interface thread.
class Keys {
public:
    /// Full names of values. Without any: all that there are.
    using Names = std::vector<std::string>;
    using Times = std::set<double>;

    /// What some values have at the document's moment.
    enum class Presence {
        Never,     ///< none of them can have keyframes
        None,      ///< no keyframe of any at any time
        Elsewhere, ///< some, but not one of each here
        Here
    };

    explicit Keys(Document& editedDocument) : document(editedDocument) {}

    /// Where there are keyframes, and whose.
    std::map<double, Names> list(Names const& names = {}) const;
    Presence find(Names const& names) const;

    /// The nearest keyframe before (-1) or after (1) the document's moment.
    std::optional<double> findNext(int direction) const;

    /// Gives each of the values a keyframe at the document's moment, or takes them all away where
    /// each has one. `title` is what a person calls the values.
    void toggle(std::string const& title, Names const& names);

    /// Takes keyframes away; a value without any left keeps what it is at the document's moment.
    void remove(Names const& names, Times const& times);

    /// Remembers keyframes; paste puts them at the document's moment. Throws ValueError where they
    /// do not fit. Returns where they came to be.
    void copy(Names const& names, Times const& times);
    bool canPaste() const { return !copied.empty(); }
    Times paste();

    /// Keyframes are moved, or copies of them: from where they were at the beginning, in the place
    /// of others that are there, until Document's endDrag or abandonDrag.
    enum class Drag { Move, Copy };
    void beginDrag(Names const& names, Times const& times, Drag kind);
    void drag(double by);

private:
    Names orAll(Names const& names) const;
    ValueState const& stateOf(std::string const& name) const;

    Document& document;
    NodeValues copied;
    double copiedFrom = 0.0; ///< the first of them

    NodeValues dragged;
    Times draggedTimes;
    Drag dragKind = Drag::Move;
};
