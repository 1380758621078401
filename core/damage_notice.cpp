#include "core/damage_notice.h"

#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "store/kept/damage.h"
#include "store/session.h"

#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void TellDamage(Session& session, const kept::Damage& damage, ToldIn where)
{
    QString text = u"データベース「"_s + QFileInfo(damage.database).fileName() + u"」が壊れています。\r\n"_s;
    if (damage.newestGood)
        text +=
            damage.newestGood->toString(u"yyyy/MM/dd HH:mm:ss"_s) +
            u" に作成した正常な控えがあります。\r\n"_s +
            (where == ToldIn::TheProgram
                 ? u"控えを取り出すには、quillon --restore で復元画面を開き、［控え］の一覧から選んでください。"_s
                 : u"［控え］の一覧から控えを取り出すことができます。"_s);
    else
        text += u"正常な控えは残されていません。\r\n"
                u"これ以上壊れないように、データベースファイルを別の場所に複写してください。"_s;
    session.dialogs.messageBox({.text = text, .title = titles::FailureCountermeasures});
}

} // namespace quillon
