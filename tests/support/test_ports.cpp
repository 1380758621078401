#include "tests/support/test_ports.h"

#include "app/base/error.h"

#include <QDir>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

namespace
{

std::size_t kindNumber(const QString& kind)
{
    const auto number = u"MRF"_s.indexOf(kind);
    if (kind.size() != 1 || number < 0)
        throw Error(errors::ObjectNotSet);
    return static_cast<std::size_t>(number);
}

QString statusCall(int panel, const QString& text)
{
    return u"setStatus %1 "_s.arg(panel) + text;
}

/// Rows as a call log shows them: their cells joined by "|", the rows by commas.
QString joined(const QStringList& rows)
{
    return rows.isEmpty() ? u"nothing"_s : rows.join(u", "_s);
}

} // namespace

std::unique_ptr<StagedCopy> RealFiles::stageCopy(const QString& source, const QString& folder,
                                                 const QString& name, const Progress& progress) const
{
    calls.note(u"copy "_s + source + u" to "_s + folder + QDir::separator() + name);
    const auto watched = [&](qint64 done, qint64 total) {
        const bool goesOn = !progress || progress(done, total);
        if (whileCopying)
            whileCopying();
        return goesOn;
    };
    if (copyFailure != 0) {
        watched(0, 2);
        watched(1, 2);
        throw Error(copyFailure);
    }
    return SystemFiles::stageCopy(source, folder, name, watched);
}

bool FakeMainWindow::unload()
{
    note(u"unload"_s);
    return false;
}

std::unique_ptr<MainWindowPort::Shown> FakeMainWindow::clearDataList()
{
    class FakeShown : public Shown
    {
    public:
        explicit FakeShown(FakeMainWindow& window) : m_window(window) {}
        void showAgain() override { m_window.note(u"showAgain"_s); }

    private:
        FakeMainWindow& m_window;
    };
    note(u"clearDataList"_s);
    return std::make_unique<FakeShown>(*this);
}

void FakeMainWindow::setStatus(int panel, const QString& text)
{
    note(statusCall(panel, text));
}

const FakeMainWindow::Node& FakeMainWindow::node(int index) const
{
    if (index < 1 || index > nodeCount())
        throw Error(errors::IndexOutOfBounds);
    return nodes[static_cast<std::size_t>(index) - 1];
}

bool FakeDataWindow::unload()
{
    note(u"unload"_s);
    if (closes && onUnload)
        onUnload();
    return closes;
}

bool FakeDataWindow::mayUnload()
{
    note(u"mayUnload"_s);
    return closes;
}

void FakeDataWindow::setFieldText(int index, const QString& text)
{
    note(u"setFieldText %1 "_s.arg(index) + text);
    fields[static_cast<std::size_t>(index)] = text;
}

void FakeDataWindow::setCaption(const QString& text)
{
    note(u"setCaption "_s + text);
    caption = text;
}

void FakeDataWindow::setMode(FormMode mode)
{
    note(mode == FormMode::Registration ? u"setMode registration"_s : u"setMode display"_s);
    if (mode == FormMode::Registration)
        shownRow = {};
}

void FakeDataWindow::setLinkRows(const std::vector<LinkRow>& rows)
{
    QStringList lines;
    for (const LinkRow& row : rows)
        lines << QStringList({row.kind, row.name, row.identifier}).join(u'|');
    if (!rows.empty() || !links.empty())
        note(u"setLinkRows "_s + joined(lines));
    links = rows;
}

void FakeDataWindow::setCategoryRows(const std::vector<CategoryRow>& rows)
{
    QStringList lines;
    for (const CategoryRow& row : rows)
        lines << row.name + u'|' + row.identifier;
    if (!rows.empty() || !categories.empty())
        note(u"setCategoryRows "_s + joined(lines));
    categories = rows;
}

void FakeDataWindow::showModal()
{
    note(u"showModal"_s);
    if (whileModal)
        whileModal();
}

bool FakeDataSelection::unload()
{
    note(u"unload"_s);
    return true;
}

void FakeDataSelection::setCaption(const QString& text)
{
    note(u"setCaption "_s + text);
    title = text;
}

void FakeDataSelection::showModal()
{
    note(u"showModal"_s);
    if (whileModal)
        whileModal();
}

void FakeDataSelection::clearRows()
{
    note(u"clearRows"_s);
    rows.clear();
}

std::unique_ptr<DataRowFill> FakeDataSelection::fillRows(const QString& /*searched*/)
{
    class Fill : public DataRowFill
    {
    public:
        explicit Fill(FakeDataSelection& window) : m_window(window) {}
        void append(QStringView name, QStringView kind, QStringView identifier) override
        {
            m_window.rows
                << QStringList({name.toString(), kind.toString(), identifier.toString()}).join(u'|');
            m_window.note(u"row "_s + m_window.rows.last());
        }
        void finish() override { m_window.note(u"rowsFinished"_s); }

    private:
        FakeDataSelection& m_window;
    };
    return std::make_unique<Fill>(*this);
}

void FakeDataSelection::setStatus(int panel, const QString& text)
{
    note(statusCall(panel, text));
}

bool FakeCategoryChooser::unload()
{
    note(u"unload"_s);
    return true;
}

void FakeCategoryChooser::setNodes(const std::vector<ChooserNode>& chooserNodes)
{
    QStringList keys;
    for (const ChooserNode& node : chooserNodes)
        keys << node.key;
    note(u"setNodes "_s + joined(keys));
    nodes = chooserNodes;
}

void FakeCategoryChooser::expandNode(int position)
{
    note(u"expandNode %1"_s.arg(position));
}

void FakeCategoryChooser::showModal()
{
    note(u"showModal"_s);
    if (whileModal)
        whileModal();
}

bool FakeLinkList::unload()
{
    note(u"unload"_s);
    return true;
}

void FakeLinkList::setCount(const QString& text)
{
    note(u"setCount "_s + text);
    count = text;
}

void FakeLinkList::reset()
{
    note(u"reset"_s);
    rows.clear();
    count.clear();
}

std::unique_ptr<LinkRowFill> FakeLinkList::fillRows()
{
    class Fill : public LinkRowFill
    {
    public:
        explicit Fill(FakeLinkList& window) : m_window(window) {}
        void append(const LinkEnd& source, const LinkEnd& target) override
        {
            QStringList cells;
            for (const QStringView cell :
                 {source.name, source.kind, target.name, target.kind, source.identifier, target.identifier})
                cells << cell.toString();
            m_window.rows << cells.join(u'|');
            m_window.note(u"row "_s + m_window.rows.last());
        }
        void finish() override { m_window.note(u"rowsFinished"_s); }

    private:
        FakeLinkList& m_window;
    };
    return std::make_unique<Fill>(*this);
}

void FakeWindows::showAuxiliary(const QString& windowName)
{
    calls.note(u"showAuxiliary "_s + windowName);
}

LinkListWindow& FakeWindows::linkList()
{
    linksLoaded = true;
    return links;
}

FakeDataWindow& FakeWindows::create(const QString& kind)
{
    static const std::array names = {u"frmMainData"_s, u"frmRefDoc"_s, u"frmRefFileEntry"_s};
    auto window = std::make_unique<FakeDataWindow>(names[kindNumber(kind)], calls);
    FakeDataWindow& created = *window;
    created.onUnload = [this, &created] { std::erase(list, &created); };
    dataWindows.push_back(std::move(window));
    list.push_back(&created);
    return created;
}

DataWindow* FakeWindows::loadedRegistrationWindow(const QString& kind)
{
    return shared[kindNumber(kind)];
}

DataWindow& FakeWindows::newDataWindow(const QString& kind)
{
    calls.note(u"newDataWindow "_s + kind);
    if (kindNumber(kind) > 1)
        throw Error(errors::ObjectNotSet);
    return create(kind);
}

DataWindow& FakeWindows::registrationWindow(const QString& kind)
{
    calls.note(u"registrationWindow "_s + kind);
    FakeDataWindow*& window = shared[kindNumber(kind)];
    if (window == nullptr)
        window = &create(kind);
    return *window;
}

} // namespace quillon::testing
