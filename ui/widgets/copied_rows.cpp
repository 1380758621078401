#include "ui/widgets/copied_rows.h"

#include "ui/widgets/report_model.h"

#include <QClipboard>
#include <QDataStream>
#include <QGuiApplication>
#include <QIODevice>
#include <QMimeData>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

const QString RowsFormat = u"application/x-quillon-rows"_s;

} // namespace

void copyRows(const ReportModel& list, const std::vector<int>& rows, int identifierColumn)
{
    QString lines;
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    for (const int row : rows) {
        for (int column = 0; column < list.columnCount(); ++column) {
            if (column > 0)
                lines += u'\t';
            lines += list.text(row, column);
        }
        lines += u'\n';
        stream << list.text(row, 0).toString() << list.text(row, identifierColumn).toString();
    }
    auto copied = std::make_unique<QMimeData>();
    copied->setText(lines);
    copied->setData(RowsFormat, data);
    QGuiApplication::clipboard()->setMimeData(copied.release());
}

std::vector<CopiedRow> copiedRows()
{
    const QMimeData* const held = QGuiApplication::clipboard()->mimeData();
    std::vector<CopiedRow> rows;
    if (held == nullptr || !held->hasFormat(RowsFormat))
        return rows;
    QDataStream stream(held->data(RowsFormat));
    stream.setVersion(QDataStream::Qt_6_0);
    while (!stream.atEnd()) {
        CopiedRow row;
        stream >> row.name >> row.identifier;
        if (stream.status() != QDataStream::Ok)
            return {};
        rows.push_back(std::move(row));
    }
    return rows;
}

} // namespace quillon
