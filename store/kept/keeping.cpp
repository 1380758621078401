#include "store/kept/keeping.h"

#include "app/base/error.h"
#include "app/base/platform/files.h"
#include "store/database.h"
#include "store/kept/file_contents.h"
#include "store/kept/history_file.h"
#include "store/kept/history_writer.h"

#include <QFileInfo>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::kept
{

namespace
{

/// A file whose content is kept; that it was replaced stands in the history only when it was.
class FileThatGoes : public Keeper::ReplacedFile
{
public:
    FileThatGoes(std::shared_ptr<HistoryFile> history, QString path, std::optional<QByteArray> hash)
        : m_history(std::move(history)), m_path(std::move(path)), m_size(QFileInfo(m_path).size()),
          m_hash(std::move(hash))
    {
        if (!m_hash)
            m_history->tellOnce(errors::PathFileAccess,
                                u"上書きされるファイル「%1」の内容は残せませんでした。"
                                u"大きすぎるか、空き領域またはアクセス権がありません。"_s.arg(m_path));
    }

    bool isKept() const override { return m_hash.has_value(); }
    void isReplaced() override
    {
        // The same file registered once more has replaced nothing.
        const bool isTheSame =
            m_hash && QFileInfo(m_path).size() == m_size && FileContents::hashOf(m_path) == m_hash;
        if (!isTheSame)
            writeFileReplaced(*m_history, QFileInfo(m_path).fileName(), m_hash.value_or(QByteArray()),
                              m_size);
    }

private:
    std::shared_ptr<HistoryFile> m_history;
    QString m_path;
    qint64 m_size; // of the former content
    std::optional<QByteArray> m_hash;
};

} // namespace

Keeping::Keeping(Reporting& reporting, QString keptFolder)
    : m_reporting(reporting), m_keptFolder(std::move(keptFolder))
{
}

Keeping::~Keeping() = default;

void Keeping::databaseOpened(Database& database)
{
    m_place.emplace(m_keptFolder, database.path());
    m_history = std::make_shared<HistoryFile>(*m_place, m_reporting);
    database.connection().watchRows(std::make_unique<HistoryWriter>(m_history));
}

std::unique_ptr<Keeper::ReplacedFile> Keeping::fileGoes(const QString& path)
{
    if (!m_history || !platform::isOrdinaryFile(path))
        return nullptr;
    return std::make_unique<FileThatGoes>(m_history, path, FileContents(*m_place).keep(path));
}

} // namespace quillon::kept
