#include "store/data_kinds.h"

#include "app/base/error.h"
#include "app/base/reporting.h"
#include "app/base/titles.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace data_kinds
{

const std::array<DataKind, Count>& all()
{
    // sic: one caption has blanks around its hyphen, the other has none. A document of more than is saved may be typed.
    static const std::array<DataKind, Count> kinds{
        {{.letter = u'M',
          .recordSet = &Session::RsMain,
          .shortName = u"定義"_s,
          .title = titles::DefinitionData,
          .windowName = u"frmMainData"_s,
          .isShownInWindow = true,
          .captionJoint = u"画面 - "_s,
          .limits = {.name = 25, .content = 127, .typing = 127, .room = 127}},
         {.letter = u'R',
          .recordSet = &Session::RsRefDoc,
          .shortName = u"文献"_s,
          .title = titles::DocumentData,
          .windowName = u"frmRefDoc"_s,
          .isShownInWindow = true,
          .captionJoint = u"画面-"_s,
          .limits = {.name = 25, .content = 32000, .typing = 32768, .room = 32768}},
         {.letter = u'F',
          .recordSet = &Session::RsRefFile,
          .shortName = u"FILE"_s,
          .title = titles::FileData,
          .windowName = u"frmRefFileEntry"_s,
          .isShownInWindow = false,
          .captionJoint = {},
          .limits = {}}}};
    return kinds;
}

const DataKind& definition()
{
    return all()[0];
}

const DataKind& document()
{
    return all()[1];
}

const DataKind& file()
{
    return all()[2];
}

std::size_t positionOf(const DataKind& kind)
{
    return static_cast<std::size_t>(&kind - all().data());
}

} // namespace data_kinds

const DataKind* kindOf(QStringView identifier)
{
    if (identifier.isEmpty())
        return nullptr;
    for (const DataKind& kind : data_kinds::all()) {
        if (kind.letter == identifier.front())
            return &kind;
    }
    return nullptr;
}

const DataKind* kindWithLetter(QStringView text)
{
    return text.size() == 1 ? kindOf(text) : nullptr;
}

const DataKind& kindForNames(QStringView identifier)
{
    const DataKind* const kind = kindOf(identifier);
    return kind != nullptr ? *kind : data_kinds::definition();
}

const QString& shortKindName(QStringView identifier)
{
    const DataKind* const kind = kindOf(identifier);
    return kind != nullptr ? kind->shortName : titles::Unknown;
}

QString GetDivName(Session& session, const QString& identifier, DivName form)
{
    QString name;
    guarded(session.reporting, u"GetDivName"_s, [&] {
        const DataKind* const kind = kindOf(identifier);
        if (form == DivName::Title)
            name = kind != nullptr ? kind->title : titles::Unknown;
        else
            name = shortKindName(identifier);
    });
    return name;
}

RecordSet& dataTableOf(Session& session, QStringView identifier)
{
    const DataKind* const kind = kindOf(identifier);
    if (kind == nullptr)
        throw Error(errors::ObjectNotSet);
    return required(session.*kind->recordSet);
}

} // namespace quillon
