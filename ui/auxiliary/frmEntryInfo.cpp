#include "ui/auxiliary/frmEntryInfo.h"

#include "app/base/error.h"
#include "store/data_kinds.h"
#include "store/record_set.h"
#include "store/session.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"

#include <QFrame>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// Runs one step; when it fails the next one follows, and nobody is told.
template <class Step> void skippingFailure(Step&& step)
{
    try {
        step();
    } catch (const Error&) {
        // A count that cannot be had keeps the caption that stands.
    }
}

/// A number within 16 bits. Error 6 beyond them.
qint16 within16Bits(qint64 number)
{
    if (number < std::numeric_limits<qint16>::min() || number > std::numeric_limits<qint16>::max())
        throw Error(errors::Overflow);
    return static_cast<qint16>(number);
}

/// A blank caption counts nothing.
qint16 countShownBy(const QLabel& label)
{
    return within16Bits(label.text().toLongLong());
}

/// A caption whose colon stands at its right edge, so that the colons of several stand below each other. The blanks of
/// the caption were made for a font whose characters are all as wide.
class CaptionWithColon : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const QString words = text().chopped(1).trimmed();
        QPainter painter(this);
        painter.drawText(rect(), static_cast<int>(Qt::AlignVCenter | Qt::AlignLeft), words);
        painter.drawText(rect(), static_cast<int>(Qt::AlignVCenter | Qt::AlignRight), text().right(1));
    }
};

/// Blank until there is a count: better nothing than a wrong number.
QLabel* countLabel(const QString& name, QWidget* parent)
{
    QLabel* label = plainLabel(name, {}, nullptr, parent);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

} // namespace

frmEntryInfo::frmEntryInfo(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmEntryInfo"_s)
{
    setWindowTitle(u"Quillon データ登録状況表示画面"_s);
    arrange();
    handleEvent(session.reporting, u"Form_Load"_s, [this] { Form_Load(); });
}

void frmEntryInfo::arrange()
{
    auto* middle = new QWidget(this);
    auto* grid = new QGridLayout(middle);

    // Assistive technology reads in the order of creation, and what belongs together by the buddy.
    const auto addRow = [&](int row, const QString& name, const QString& caption) {
        auto* words = new CaptionWithColon(caption, middle);
        words->setObjectName(name);
        words->setTextFormat(Qt::PlainText);
        QLabel* count = countLabel(name + u"Count"_s, middle);
        words->setBuddy(count);
        grid->addWidget(words, row, 0);
        grid->addWidget(count, row, 1);
        return count;
    };
    lblMainCount = addRow(0, u"lblMain"_s, u"定義データ 登録数      :"_s);
    lblRefDocCount = addRow(1, u"lblRefDoc"_s, u"文献データ 登録数      :"_s);
    lblRefFileCount = addRow(2, u"lblRefFile"_s, u"ファイルデータ 登録数 :"_s);
    auto* line = new QFrame(middle);
    line->setObjectName(u"Line1"_s);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    grid->addWidget(line, 3, 0, 1, 2);
    lblAllCount = addRow(4, u"lblAll"_s, u"全データ 登録数        :"_s);

    grid->setColumnStretch(1, 1);
    grid->setColumnMinimumWidth(1, fontMetrics().horizontalAdvance(u"0000000000"_s));
    grid->setRowStretch(5, 1);
    setContents(middle);
    openOverMainWindow();
}

void frmEntryInfo::Form_Load()
{
    const std::array counts = {lblMainCount, lblRefDocCount, lblRefFileCount}; // in the order of the kinds
    for (const DataKind& kind : data_kinds::all())
        skippingFailure([&] { required(session().*kind.recordSet).moveLast(); });
    for (const DataKind& kind : data_kinds::all()) {
        skippingFailure([&] {
            counts[data_kinds::positionOf(kind)]->setText(
                QString::number(required(session().*kind.recordSet).recordCount()));
        });
    }
    if (std::all_of(counts.begin(), counts.end(),
                    [](const QLabel* count) { return count->text().isEmpty(); }))
        return;
    skippingFailure([&] {
        const qint16 two = within16Bits(countShownBy(*lblMainCount) + countShownBy(*lblRefDocCount));
        lblAllCount->setText(QString::number(within16Bits(two + countShownBy(*lblRefFileCount))));
    });
}

void frmEntryInfo::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        handleEvent(session().reporting, u"Form_KeyPress"_s, [this] { unload(); });
        event->accept();
        return;
    }
    FormWindow::keyPressEvent(event);
}

} // namespace quillon
