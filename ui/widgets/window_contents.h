#pragma once

#include "ui/widgets/scrolled_area.h"

class QLayout;

namespace quillon
{

/// The controls of a window above the row that answers it: where there is too little room the controls scroll and the
/// row stays in view; where there is hardly any, all of it scrolls.
class WindowContents : public ScrolledArea
{
    Q_OBJECT

public:
    /// The margins are those of the window; the controls have none of their own.
    WindowContents(QWidget* body, QLayout* bottom, QWidget* parent = nullptr);

    QSize leastContent() const override;

private:
    ScrolledArea* m_body;
    QLayout* m_bottom;
};

} // namespace quillon
