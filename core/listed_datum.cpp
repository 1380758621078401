#include "core/listed_datum.h"

#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "store/session.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void tellNotFound(Session& session, qsizetype count)
{
    if (count == 0)
        return;
    QString text = u"指定されたデータが見つかりませんでした。"_s;
    if (count > 1)
        text += u"\r\n("_s + QString::number(count) + u" 件)"_s;
    session.dialogs.messageBox({.text = text, .title = titles::DataResearch});
}

} // namespace quillon
