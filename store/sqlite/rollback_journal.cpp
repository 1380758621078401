#include "store/sqlite/rollback_journal.h"

#include <QFile>
#include <QtEndian>

using namespace Qt::Literals::StringLiterals;

namespace quillon::sqlite
{

namespace
{

QString journalOf(const QString& path)
{
    return path + u"-journal"_s;
}

/// One whose beginning is wiped out is not played back any more.
bool isWipedOut(QFile& journal)
{
    return journal.peek(1) == QByteArray(1, '\0');
}

} // namespace

bool hasJournal(const QString& path)
{
    QFile journal(journalOf(path));
    return journal.open(QIODevice::ReadOnly) && journal.size() > 0 && !isWipedOut(journal);
}

bool journalNamesFurtherFiles(const QString& path)
{
    QFile journal(journalOf(path));
    if (!journal.open(QIODevice::ReadOnly) || isWipedOut(journal))
        return false;
    // It would end in the name, the name's length, a sum and a mark.
    const QByteArray mark("\xD9\xD5\x05\xF9\x20\xA1\x63\xD7", 8);
    constexpr qint64 NumbersAndMark = 16;
    const qint64 size = journal.size();
    if (size < NumbersAndMark || !journal.seek(size - NumbersAndMark))
        return false;
    const QByteArray end = journal.read(NumbersAndMark);
    if (end.size() != NumbersAndMark || !end.endsWith(mark))
        return false;
    const auto length = qFromBigEndian<quint32>(end.constData());
    return length > 0 && length <= size - NumbersAndMark;
}

} // namespace quillon::sqlite
