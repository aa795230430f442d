#include "editor/view/parameters/RowLabel.h"

void RowLabel::mouseDoubleClickEvent(QMouseEvent*)
{
    emit doubleClicked();
}

#include "editor/view/parameters/moc_RowLabel.cpp"
