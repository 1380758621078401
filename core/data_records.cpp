#include "core/data_records.h"

#include "app/base/ports/data_window.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/main_window_port.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"
#include "core/categories.h"
#include "core/form_mode.h"
#include "core/links.h"
#include "store/identifiers.h"
#include "store/record_set.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// The fixed nodes of the main window's category tree stand before the user's categories.
constexpr int LastFixedNode = 9;

/// A kind of datum that is shown in a window of its own.
struct ShownKind {
    QString letter;
    QString windowName;
    QString shortName;
    QString captionJoint; // between the short name and the datum's name
    std::shared_ptr<RecordSet> Session::*table;
};

bool find(RecordSet& rows, const QString& identifier)
{
    rows.findFirst(u"Object_ID ='"_s + identifier + u"'"_s);
    return rows.hasCurrentRow() && rows.field(1) == identifier;
}

DataWindow* windowShowing(Session& session, const ShownKind& kind, const QString& identifier)
{
    for (LoadedWindow* loaded : session.windows.loaded()) {
        DataWindow* window = loaded->asDataWindow();
        if (window != nullptr && window->windowName() == kind.windowName &&
            window->fieldText(1) == identifier)
            return window;
    }
    return nullptr;
}

void show(Session& session, const ShownKind& kind, const QString& identifier)
{
    if (DataWindow* open = windowShowing(session, kind, identifier)) {
        open->bringToFront();
        return;
    }
    RecordSet& rows = required(session.*kind.table);
    if (!find(rows, identifier)) {
        session.dialogs.messageBox({.text = u"指定されたデータが見つかりませんでした。"_s,
                                    .title = kind.shortName,
                                    .icon = Icon::Information});
        return;
    }
    // Read before the window appears: nothing may rely on the cursor once events can run.
    const QString fields[] = {rows.field(0), rows.field(1), rows.field(2)};
    DataWindow& window = session.windows.newDataWindow(kind.letter);
    window.showModeless();
    window.setCaption(kind.shortName + kind.captionJoint + fields[0]);
    window.setModeText(titles::DisplayMode);
    for (int i = 0; i < 3; ++i)
        window.setFieldText(i, fields[i]);
    SetLinkList(session, window, identifier);
    AddCategory(session, window, identifier);
}

} // namespace

QString GetDataName(Session& session, const QString& identifier)
{
    QString name;
    guarded(session.reporting, u"GetDataName"_s, [&] {
        RecordSet& rows = required(identifier.startsWith(u'F')   ? session.RsRefFile
                                   : identifier.startsWith(u'R') ? session.RsRefDoc
                                                                 : session.RsMain);
        name = find(rows, identifier) ? rows.field(0) : titles::Unknown;
    });
    return name;
}

void ShowData(Session& session, const QString& identifier)
{
    // sic: one caption has blanks around its hyphen, the other has none.
    static const ShownKind definition{u"M"_s, u"frmMainData"_s, u"定義"_s, u"画面 - "_s, &Session::RsMain};
    static const ShownKind document{u"R"_s, u"frmRefDoc"_s, u"文献"_s, u"画面-"_s, &Session::RsRefDoc};

    guarded(session.reporting, u"ShowData"_s, [&] {
        if (identifier.startsWith(u'M'))
            show(session, definition, identifier);
        else if (identifier.startsWith(u'R'))
            show(session, document, identifier);
    });
}

void CreateRegisterForm(Session& session, const QString& kind)
{
    guarded(session.reporting, u"CreateRegisterForm"_s, [&] {
        DataWindow& window = session.windows.registrationWindow(kind);
        window.showModeless();
        window.setFieldText(1, CreateObject_ID(session, kind));
        SetFormMode(window, RegistrationFormMode);
        const MainWindowPort& mainWindow = session.mainWindow();
        const int node = mainWindow.selectedNodeIndex();
        if (node > LastFixedNode) {
            auto rows = window.categoryRows();
            rows.push_back({.name = mainWindow.nodeText(node), .identifier = mainWindow.nodeKey(node)});
            window.setCategoryRows(rows);
        }
    });
}

} // namespace quillon
