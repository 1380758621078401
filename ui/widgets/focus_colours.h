#pragma once

#include <QColor>

class QPalette;

namespace quillon
{

/// How much a colour stands out from another one: from 1, not at all, to 21, black from white.
double contrast(const QColor& one, const QColor& other);

/// What of a pane is selected, its background and its text.
struct SelectionColours {
    QColor background;
    QColor text;
};

/// The selection of a pane that has not got the keyboard: in the palette's inactive colours, or, where nobody could tell
/// those from the active ones or from a row that is not selected, in a grey between its background and its text.
SelectionColours restingSelection(const QPalette& palette);

/// Marks what has the keyboard: the colour of selections where it stands out from windows and fields, else another one
/// of the palette that does.
QColor focusColour(const QPalette& palette);

/// Frames a row of a pane: the colour of selections where it stands out from the background of the row, else another one
/// that does.
QColor frameColour(const QPalette& palette, const QColor& background);

/// Of links in a text: the palette's colour where it can be read, else one that is nearer to that of the text. Some dark
/// palettes leave links the blue that is meant for white paper.
QColor linkColour(const QPalette& palette);

} // namespace quillon
