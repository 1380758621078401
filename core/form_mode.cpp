#include "core/form_mode.h"

#include "app/base/ports/data_window.h"
#include "app/base/titles.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

void setRegistrationMode(DataWindow& window)
{
    const QString name = window.windowName();
    const bool definition = name == u"frmMainData";
    if (!definition && name != u"frmRefDoc")
        return;
    window.setMenuEnabled(u"mnuLink"_s, false);
    window.setMenuEnabled(u"mnuDataUpdate"_s, false);
    window.setMenuEnabled(u"mnuDataEntry"_s, true);
    window.setMenuEnabled(u"mnuDataDelete"_s, false);
    window.setMenuEnabled(u"mnuCategory"_s, false);
    window.setModeText(titles::RegistrationMode);
    window.setMenuEnabled(definition ? u"mnuDataNoDef"_s : u"mnuDataLoadText"_s, true);
}

void setDisplayMode(DataWindow& window)
{
    window.setMenuEnabled(u"mnuLink"_s, true);
    window.setMenuEnabled(u"mnuCategory"_s, true);
    window.setMenuEnabled(u"mnuDataDelete"_s, true);
    window.setMenuEnabled(u"mnuDataUpdate"_s, true);
    window.setMenuEnabled(u"mnuDataEntry"_s, false);
    if (window.windowName() == u"frmMainData")
        window.setMenuEnabled(u"mnuDataNoDef"_s, false);
    // sic: mnuDataLoadText keeps its state, so that texts can be loaded into a shown document too.
    window.setModeText(titles::DisplayMode);
}

} // namespace

void SetFormMode(DataWindow& window, qint16 mode)
{
    if (mode == RegistrationFormMode)
        setRegistrationMode(window);
    else if (mode == DisplayFormMode)
        setDisplayMode(window);
}

} // namespace quillon
