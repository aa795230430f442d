#include "editor/view/parameters/RowLabel.h"

void RowLabel::mouseDoubleClickEvent(QMouseEvent*)
{
    emit doubleClicked();
}
