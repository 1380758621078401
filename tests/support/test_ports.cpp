#include "tests/support/test_ports.h"

#include "app/base/error.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

namespace
{

int kindNumber(const QString& kind)
{
    const auto number = u"MRF"_s.indexOf(kind);
    if (kind.size() != 1 || number < 0)
        throw Error(errors::ObjectNotSet);
    return static_cast<int>(number);
}

} // namespace

void RealFiles::copyInto(const QString& source, const QString& folder, const QString& name,
                         const Progress& progress) const
{
    if (copyFailure != 0)
        throw Error(copyFailure);
    SystemFiles::copyInto(source, folder, name, progress);
}

void FakeMainWindow::setStatus(int panel, const QString& text)
{
    calls << QString::number(panel) + u": "_s + text;
}

const FakeMainWindow::Node& FakeMainWindow::node(int index) const
{
    if (index < 1 || index > nodeCount())
        throw Error(errors::IndexOutOfBounds);
    return nodes[static_cast<std::size_t>(index) - 1];
}

bool FakeDataWindow::unload()
{
    if (closes && onUnload)
        onUnload();
    return closes;
}

void FakeDataWindow::setMenuEnabled(const QString& menuName, bool enabled)
{
    menuCalls << (enabled ? u"+"_s : u"-"_s) + menuName;
}

void FakeDataWindow::showModal()
{
    ++shown;
    if (whileModal)
        whileModal();
}

void FakeDataSelection::showModal()
{
    calls << u"show modal"_s;
    if (whileModal)
        whileModal();
}

void FakeDataSelection::clearRows()
{
    calls << u"clear"_s;
    rows.clear();
}

std::unique_ptr<DataRowFill> FakeDataSelection::fillRows()
{
    class Fill : public DataRowFill
    {
    public:
        explicit Fill(QStringList& rows) : m_rows(rows) {}
        void append(QStringView name, QStringView kind, QStringView identifier) override
        {
            m_rows << QStringList({name.toString(), kind.toString(), identifier.toString()}).join(u'|');
        }

    private:
        QStringList& m_rows;
    };
    return std::make_unique<Fill>(rows);
}

void FakeDataSelection::setStatus(int panel, const QString& text)
{
    calls << QString::number(panel) + u": "_s + text;
}

bool FakeCategoryChooser::unload()
{
    ++unloads;
    return true;
}

void FakeCategoryChooser::showModal()
{
    ++shown;
    if (whileModal)
        whileModal();
}

void FakeLinkList::reset()
{
    ++resets;
    rows.clear();
    count.clear();
}

std::unique_ptr<LinkRowFill> FakeLinkList::fillRows()
{
    class Fill : public LinkRowFill
    {
    public:
        explicit Fill(QStringList& rows) : m_rows(rows) {}
        void append(const LinkEnd& source, const LinkEnd& target) override
        {
            QStringList cells;
            for (const QStringView cell :
                 {source.name, source.kind, target.name, target.kind, source.identifier, target.identifier})
                cells << cell.toString();
            m_rows << cells.join(u'|');
        }

    private:
        QStringList& m_rows;
    };
    return std::make_unique<Fill>(rows);
}

LinkListWindow& FakeWindows::linkList()
{
    linksLoaded = true;
    return links;
}

FakeDataWindow& FakeWindows::create(const QString& kind)
{
    static const QString names[] = {u"frmMainData"_s, u"frmRefDoc"_s, u"frmRefFileEntry"_s};
    auto window = std::make_unique<FakeDataWindow>(names[kindNumber(kind)]);
    FakeDataWindow& created = *window;
    created.onUnload = [this, &created] { std::erase(list, &created); };
    dataWindows.push_back(std::move(window));
    list.push_back(&created);
    return created;
}

DataWindow& FakeWindows::newDataWindow(const QString& kind)
{
    if (kindNumber(kind) > 1)
        throw Error(errors::ObjectNotSet);
    return create(kind);
}

DataWindow& FakeWindows::registrationWindow(const QString& kind)
{
    FakeDataWindow*& window = shared[kindNumber(kind)];
    if (window == nullptr)
        window = &create(kind);
    return *window;
}

} // namespace quillon::testing
