#pragma once

#include <QHash>
#include <QMap>
#include <QRegularExpression>
#include <QStringList>
#include <QVector>

namespace quillon::testing
{

/// What a file includes of the repository, as it is written there. Sources made by the build are left out.
inline QStringList includesIn(const QString& content)
{
    static const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s+\"([^\"]+)\""),
                                            QRegularExpression::MultilineOption);
    QStringList found;
    auto matches = include.globalMatch(content);
    while (matches.hasNext()) {
        const QString included = matches.next().captured(1);
        if (!included.endsWith(QStringLiteral(".moc")))
            found << included;
    }
    return found;
}

/// A header and its source are one room: "core/links" for "core/links.h".
inline QString roomOf(const QString& path)
{
    return path.left(path.lastIndexOf(u'.'));
}

/// A row of the table of arrows: a folder and the folders whose files it may include.
struct ArrowRow {
    QString folder;
    QStringList mayInclude;
    bool anything = false; // "*" stands for every folder of an earlier row
};

/// The table between two marks of a document; the first word in `back quotes` of a row is its folder.
inline QList<ArrowRow> arrowTableIn(const QString& document)
{
    static const QRegularExpression word(QStringLiteral("`([^`]+)`"));
    QList<ArrowRow> rows;
    const QString table = document.section(QStringLiteral("<!-- arrows begin -->"), 1)
                              .section(QStringLiteral("<!-- arrows end -->"), 0, 0);
    for (const QString& line : table.split(u'\n')) {
        ArrowRow row;
        auto words = word.globalMatch(line);
        while (words.hasNext()) {
            const QString name = words.next().captured(1);
            if (row.folder.isEmpty())
                row.folder = name;
            else if (name == u'*')
                row.anything = true;
            else
                row.mayInclude << name;
        }
        if (!row.folder.isEmpty())
            rows << row;
    }
    return rows;
}

/// The row a file belongs to: that of the nearest folder above it that has one. -1 when there is none.
inline qsizetype rowOf(const QList<ArrowRow>& table, const QString& path)
{
    qsizetype nearest = -1;
    for (qsizetype i = 0; i < table.size(); ++i) {
        if (path.startsWith(table[i].folder + u'/') &&
            (nearest < 0 || table[i].folder.size() > table[nearest].folder.size()))
            nearest = i;
    }
    return nearest;
}

/// Rooms and the rooms they include.
using IncludeGraph = QMap<QString, QStringList>;

/// The shortest way from a room along the includes back to itself, both ends named; empty when there is none.
inline QStringList shortestCircle(const IncludeGraph& graph, const QString& room)
{
    QHash<QString, QString> cameFrom;
    QStringList next{room};
    for (qsizetype i = 0; i < next.size(); ++i) {
        const QString from = next[i];
        for (const QString& to : graph.value(from)) {
            if (to == room) {
                QStringList circle{room};
                for (QString step = from; step != room; step = cameFrom.value(step))
                    circle.prepend(step);
                return QStringList{room} + circle;
            }
            if (!cameFrom.contains(to)) {
                cameFrom.insert(to, from);
                next << to;
            }
        }
    }
    return {};
}

/// "a -> b -> a": the shortest circle through each room that has one, each circle once.
inline QStringList circlesIn(const IncludeGraph& graph)
{
    QStringList circles;
    QStringList seen;
    for (auto room = graph.keyBegin(); room != graph.keyEnd(); ++room) {
        const QStringList circle = shortestCircle(graph, *room);
        if (circle.isEmpty())
            continue;
        QStringList members = circle.mid(1);
        members.sort();
        const QString name = members.join(u' ');
        if (seen.contains(name))
            continue;
        seen << name;
        circles << circle.join(QStringLiteral(" -> "));
    }
    return circles;
}

} // namespace quillon::testing
