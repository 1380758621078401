#include "app/shell/missing_parts.h"

#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "store/kept/place.h"

#include <QCoreApplication>
#include <QDir>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

// The log of the desktop is looked into where no window can be read.
void printError(const QString& text)
{
    const QByteArray line = "quillon: " + text.toUtf8() + '\n';
    static_cast<void>(std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr));
    static_cast<void>(std::fflush(stderr));
}

/// Only these platforms ask the environment for an input method; the others bring their own.
bool looksForInputMethods(const QString& platform)
{
    return platform == u"xcb"_s || platform.startsWith(u"wayland"_s);
}

QtMessageHandler& usualHandler()
{
    static QtMessageHandler handler = nullptr;
    return handler;
}

void endWithoutDisplay(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type != QtFatalMsg) {
        usualHandler()(type, context, message);
        return;
    }
    printError(message.trimmed());
    printError(u"画面に接続できないため、起動できませんでした。"_s +
               (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
                    ? u"デスクトップの中で起動してください。"_s
                    : u"Wayland のデスクトップでは Qt 6 の Wayland プラグインが必要です（Debian では "
                      u"qt6-wayland パッケージ）。"_s));
    // Nothing has been opened yet, and the toolkit is only half there.
    std::_Exit(1);
}

} // namespace

MissingParts missingParts(const QFont& font)
{
    MissingParts missing;
    // The fonts that stand in for this one count, too.
    const QFontMetrics metrics(font);
    constexpr std::array Samples{u'あ', u'ア', u'漢', u'語', u'、'};
    missing.japaneseFont = !std::all_of(Samples.cbegin(), Samples.cend(),
                                        [&metrics](char16_t character) { return metrics.inFont(character); });
    const QString wanted = qEnvironmentVariable("QT_IM_MODULE");
    if (!wanted.isEmpty() && looksForInputMethods(QGuiApplication::platformName()) &&
        !hasInputMethod(wanted, QCoreApplication::libraryPaths()))
        missing.inputMethod = wanted;
    return missing;
}

bool hasInputMethod(const QString& name, const QStringList& pluginFolders)
{
    // Words for doing without one.
    if (name.compare(u"none"_s, Qt::CaseInsensitive) == 0 ||
        name.compare(u"simple"_s, Qt::CaseInsensitive) == 0)
        return true;
    for (const QString& folder : pluginFolders) {
        const QDir plugins(folder + u"/platforminputcontexts"_s);
        for (const QString& file : plugins.entryList(QDir::Files)) {
            const QJsonObject about = QPluginLoader(plugins.filePath(file)).metaData();
            const QJsonArray keys = about.value(u"MetaData"_s).toObject().value(u"Keys"_s).toArray();
            for (const auto& key : keys) {
                if (key.toString().compare(name, Qt::CaseInsensitive) == 0)
                    return true;
            }
        }
    }
    return false;
}

void tellMissingParts(Dialogs* dialogs, const MissingParts& missing)
{
    QStringList texts;
    if (missing.japaneseFont) {
        texts << u"日本語のフォントが見つからないため、文字を正しく表示できません。フォントを導入してから、"
                 u"起動し直してください（Debian では fonts-noto-cjk パッケージなど）。"_s;
        texts << u"No Japanese font was found, so the texts cannot be read. Install one and start again "
                 u"(on Debian, for example, the package fonts-noto-cjk)."_s;
    }
    if (!missing.inputMethod.isEmpty()) {
        texts << u"入力メソッド「%1」の Qt 6 用の部品が見つからないため、日本語を入力できないことがあります。"
                 u"部品を導入するか、環境変数 QT_IM_MODULE を直してください"
                 u"（Debian では fcitx5-frontend-qt6 パッケージなど）。"_s.arg(missing.inputMethod);
        if (missing.japaneseFont)
            texts
                << u"The part of the input method \"%1\" for Qt 6 was not found, so Japanese may be impossible "
                   u"to type. Install it or correct the environment variable QT_IM_MODULE (on Debian, for "
                   u"example, the package fcitx5-frontend-qt6)."_s.arg(missing.inputMethod);
    }
    if (!texts.isEmpty())
        tellAtStart(dialogs, texts);
}

void tellUnwritableKeptFolder(Dialogs* dialogs, const std::optional<QString>& keptFolder)
{
    if (!keptFolder || kept::mayKeepIn(*keptFolder))
        return;
    tellAtStart(
        dialogs,
        {u"上書きまたは削除した内容と控えを残すフォルダ「%1」に書き込めません。このままでは、失われたデータを"
         u"後で戻せません。アクセス権を確認するか、環境変数 QUILLON_COPIES で別の場所を指定してください。"_s
             .arg(QDir::toNativeSeparators(*keptFolder))});
}

void tellAtStart(Dialogs* dialogs, const QStringList& texts)
{
    for (const QString& text : texts)
        printError(QString(text).replace(u"\r\n"_s, u" "_s));
    if (dialogs != nullptr)
        dialogs->messageBox({.text = texts.join(u"\r\n\r\n"_s), .title = titles::SystemOperation});
}

DisplayWatch::DisplayWatch()
{
    usualHandler() = qInstallMessageHandler(endWithoutDisplay);
}

DisplayWatch::~DisplayWatch()
{
    qInstallMessageHandler(usualHandler());
}

} // namespace quillon
