#include "ui/widgets/window_contents.h"

#include <QBoxLayout>

#include <algorithm>

namespace quillon
{

WindowContents::WindowContents(QWidget* body, QLayout* bottom, QWidget* parent)
    : ScrolledArea(new QWidget, Least::Content, parent), m_body(new ScrolledArea(body, Least::FewLines)),
      m_bottom(bottom)
{
    // So much of the margins lies where it scrolls, for the ring around a control at the edge that has the keyboard.
    constexpr int Ring = 2;
    if (body->layout() != nullptr)
        body->layout()->setContentsMargins(Ring, Ring, Ring, Ring);
    bottom->setContentsMargins(Ring, 0, Ring, 0);
    auto* rows = new QVBoxLayout(widget());
    const QMargins around = rows->contentsMargins();
    rows->setContentsMargins(around - QMargins(Ring, Ring, Ring, 0));
    rows->setSpacing(std::max(rows->spacing() - Ring, 0));
    rows->addWidget(m_body, 1);
    rows->addLayout(bottom);
}

QSize WindowContents::leastContent() const
{
    const auto& rows = *static_cast<QBoxLayout*>(widget()->layout());
    const QSize body = m_body->leastContent();
    const QSize bottom = m_bottom->sizeHint(); // in one row
    return QSize(std::max(body.width(), bottom.width()), body.height() + rows.spacing() + bottom.height())
        .grownBy(rows.contentsMargins());
}

} // namespace quillon
