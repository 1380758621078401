#include "exchange/html_book.h"

#include "exchange/all_data.h"
#include "exchange/book_looks.h"
#include "exchange/copied_files.h"
#include "exchange/json_text.h"
#include "exchange/markup.h"
#include "exchange/output.h"
#include "exchange/progress.h"
#include "store/lookup/identifier_pages.h"

#include <QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::exchange
{

namespace
{

// Of a long text this much can be searched for.
constexpr qsizetype Searched = 4000;
constexpr std::size_t RowsOfAList = 1000;

class HtmlBook
{
public:
    HtmlBook(Session& session, const QString& folder, Progress* progress)
        : m_output(folder), m_progress(progress), m_all(session, AllData::Texts::Come),
          m_files(session, m_output, m_report)
    {
    }

    ExportReport run()
    {
        m_output.makeFolder();
        for (const QString& folder : {u"data"_s, u"categories"_s, u"lists"_s})
            m_output.makeFolder(folder);
        put(u"style.css"_s, book::Style);
        put(u"search.js"_s, book::Search);
        writeData();
        for (const AllData::Category& category : m_all.categories())
            writeCategory(category);
        writeIndex();
        m_output.place();
        return std::move(m_report);
    }

private:
    void put(const QString& path, const QByteArray& content)
    {
        writeFile(m_output.inside(path), content, OutputFile::Care::Quick);
        ++m_report.files;
    }

    /// `up`: the way from the page to the folder of the book.
    void putPage(const QString& path, const QString& up, const QString& title, const QString& body)
    {
        const QString home =
            up.isEmpty() ? QString() : u"<nav><a href=\"../index.html\">目次と検索</a></nav>\n"_s;
        put(path, (u"<!DOCTYPE html>\n<html lang=\"ja\">\n<head>\n<meta charset=\"utf-8\">\n"
                   u"<meta name=\"viewport\" content=\"width=device-width\">\n<title>"_s +
                   escapedMarkup(title) + u"</title>\n<link rel=\"stylesheet\" href=\""_s + up +
                   u"style.css\">\n</head>\n<body>\n"_s + home + body + u"</body>\n</html>\n"_s)
                      .toUtf8());
    }

    QString pageOf(std::size_t position) const
    {
        const QString& identifier = m_all.data()[position].identifier;
        return (identifierNumber(identifier) ? identifier : u"x%1"_s.arg(position)) + u".html"_s;
    }
    QString pageOf(const AllData::Category& category) const
    {
        return QString::number(&category - m_all.categories().data() + 1) + u".html"_s;
    }

    /// `up`: from the page with the link to the folder of the book.
    QString linkTo(std::size_t position, const QString& up) const
    {
        const QString& name = m_all.data()[position].name;
        return u"<a href=\""_s + up + u"data/"_s + pageOf(position) + u"\">"_s +
               escapedMarkup(name.isEmpty() ? m_all.data()[position].identifier : name) + u"</a>"_s;
    }
    QString linkTo(const AllData::Category& category, const QString& up) const
    {
        return u"<a href=\""_s + up + u"categories/"_s + pageOf(category) + u"\">"_s +
               escapedMarkup(category.name.isEmpty() ? category.identifier : category.name) + u"</a>"_s;
    }
    QString listOf(const std::vector<std::size_t>& positions, const QString& up) const
    {
        QString list = u"<ul>\n"_s;
        for (const std::size_t position : positions)
            list += u"<li>"_s + linkTo(position, up) + u"</li>\n"_s;
        return list + u"</ul>\n"_s;
    }

    /// The categories from the top level down to one, each as a link.
    QString wayTo(const AllData::Category& category) const
    {
        QString way;
        for (const std::size_t above : m_all.positionsTo(category))
            way += (way.isEmpty() ? u""_s : u" › "_s) + linkTo(m_all.categories()[above], u"../"_s);
        return way;
    }

    void writeData()
    {
        QByteArray index = "window.quillonIndex=[\n";
        qint64 done = 0;
        m_all.forEachText([&](std::size_t position, const QString& text) {
            writeDatum(position, text);
            const AllData::Datum& datum = m_all.data()[position];
            index += '[';
            appendJsonText(index, u"data/"_s + pageOf(position));
            index += ',';
            appendJsonText(index, datum.name.isEmpty() ? datum.identifier : datum.name);
            index += ',';
            appendJsonText(index, text.first(std::min(text.size(), Searched)));
            index += "],\n";
            advance(m_progress, ++done, static_cast<qint64>(m_all.data().size()));
        });
        put(u"search-index.js"_s, index + "];\n");
        m_report.written = done;
    }

    void writeDatum(std::size_t position, const QString& text)
    {
        const AllData::Datum& datum = m_all.data()[position];
        QString body = u"<article>\n<h1>"_s + escapedMarkup(datum.name) + u"</h1>\n<p class=\"facts\">"_s +
                       escapedMarkup(datum.kind->shortName + u" · "_s + datum.identifier) + u"</p>\n"_s;
        if (datum.kind == &data_kinds::file()) {
            if (const auto name = m_files.copy(datum, text, m_progress))
                body += u"<p><a href=\"../RefFile/"_s + QString::fromLatin1(QUrl::toPercentEncoding(*name)) +
                        u"\">"_s + escapedMarkup(*name) + u"</a></p>\n"_s;
        }
        body += u"<div class=\"text\">"_s + escapedMarkup(text) + u"</div>\n</article>\n"_s;
        const auto section = [&](const QString& title, const std::vector<std::size_t>& positions) {
            if (!positions.empty())
                body += u"<section>\n<h2>"_s + title + u"</h2>\n"_s + listOf(positions, u"../"_s) +
                        u"</section>\n"_s;
        };
        section(u"リンク先"_s, datum.linksTo);
        section(u"リンク元"_s, datum.linkedFrom);
        if (!datum.categories.empty()) {
            body += u"<section>\n<h2>分類</h2>\n<ul>\n"_s;
            for (const std::size_t category : datum.categories)
                body += u"<li>"_s + wayTo(m_all.categories()[category]) + u"</li>\n"_s;
            body += u"</ul>\n</section>\n"_s;
        }
        putPage(u"data/"_s + pageOf(position), u"../"_s, datum.name, body);
    }

    void writeCategory(const AllData::Category& category)
    {
        QString body = u"<h1>"_s + escapedMarkup(category.name) + u"</h1>\n<p class=\"facts\">"_s +
                       wayTo(category) + u"</p>\n"_s;
        if (!category.below.empty()) {
            body += u"<h2>下位分類</h2>\n<ul>\n"_s;
            for (const std::size_t below : category.below)
                body += u"<li>"_s + linkTo(m_all.categories()[below], u"../"_s) + u"</li>\n"_s;
            body += u"</ul>\n"_s;
        }
        if (!category.data.empty())
            body += u"<h2>データ</h2>\n"_s + listOf(category.data, u"../"_s);
        putPage(u"categories/"_s + pageOf(category), u"../"_s, category.name, body);
    }

    /// The categories from one on as a tree that can be opened and closed.
    QString treeFrom(const AllData::Category& category) const
    {
        const QString row = linkTo(category, {}) + u" <span class=\"count\">"_s +
                            QString::number(category.data.size()) + u"</span>"_s;
        if (category.below.empty())
            return u"<li>"_s + row + u"</li>\n"_s;
        QString tree = u"<li><details open><summary>"_s + row + u"</summary>\n<ul>\n"_s;
        for (const std::size_t below : category.below)
            tree += treeFrom(m_all.categories()[below]);
        return tree + u"</ul>\n</details></li>\n"_s;
    }

    /// Writes a list in pages that a reader can load; answers the line of the index that leads to it.
    QString writeList(const QString& name, const QString& title, const std::vector<std::size_t>& positions)
    {
        if (positions.empty())
            return {};
        QString links;
        for (std::size_t begin = 0; begin < positions.size(); begin += RowsOfAList) {
            const std::size_t end = std::min(positions.size(), begin + RowsOfAList);
            const QString page = u"lists/%1-%2.html"_s.arg(name).arg(begin / RowsOfAList + 1);
            putPage(page, u"../"_s, title,
                    u"<h1>"_s + title + u"</h1>\n"_s +
                        listOf({positions.begin() + static_cast<std::ptrdiff_t>(begin),
                                positions.begin() + static_cast<std::ptrdiff_t>(end)},
                               u"../"_s));
            links += u" <a href=\""_s + page + u"\">"_s + QString::number(begin + 1) + u"–"_s +
                     QString::number(end) + u"</a>"_s;
        }
        return u"<li>"_s + title + links + u"</li>\n"_s;
    }

    void writeIndex()
    {
        QString tree;
        for (const AllData::Category& category : m_all.categories()) {
            if (category.isTop)
                tree += treeFrom(category);
        }
        QString lists;
        const auto where = [&](const auto& wanted) {
            std::vector<std::size_t> positions;
            for (std::size_t i = 0; i < m_all.data().size(); ++i) {
                if (wanted(m_all.data()[i]))
                    positions.push_back(i);
            }
            return positions;
        };
        struct List {
            QString name;
            QString title;
            const DataKind& kind;
        };
        for (const List& list : {List{u"definitions"_s, u"定義データ"_s, data_kinds::definition()},
                                 List{u"documents"_s, u"文献データ"_s, data_kinds::document()},
                                 List{u"files"_s, u"ファイルデータ"_s, data_kinds::file()}})
            lists += writeList(list.name, list.title,
                               where([&](const AllData::Datum& datum) { return datum.kind == &list.kind; }));
        lists += writeList(u"uncategorised"_s, u"未分類データ"_s,
                           where([](const AllData::Datum& datum) { return datum.categories.empty(); }));
        putPage(u"index.html"_s, {}, u"目次"_s,
                u"<h1>目次</h1>\n<form id=\"searching\" role=\"search\">\n"
                u"<label for=\"search\">名称と本文の検索</label>\n"
                u"<input type=\"search\" id=\"search\" autocomplete=\"off\">\n"
                u"<p class=\"count\" id=\"count\" aria-live=\"polite\"></p>\n"
                u"<p id=\"none\" hidden>見つかりませんでした。</p>\n<ul id=\"found\"></ul>\n</form>\n"_s +
                    (tree.isEmpty() ? QString() : u"<h2>分類</h2>\n<ul>\n"_s + tree + u"</ul>\n"_s) +
                    (lists.isEmpty() ? QString() : u"<h2>一覧</h2>\n<ul>\n"_s + lists + u"</ul>\n"_s) +
                    u"<script src=\"search.js\"></script>\n"_s);
    }

    ExportReport m_report;
    StagedOutput m_output;
    Progress* m_progress;
    AllData m_all;
    CopiedFiles m_files;
};

} // namespace

ExportReport exportHtmlBook(Session& session, const QString& folder, Progress* progress)
{
    return HtmlBook(session, folder, progress).run();
}

} // namespace quillon::exchange
