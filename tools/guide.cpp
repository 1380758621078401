#include "tools/guide.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QInputDialog>
#include <QMessageBox>
#include <QPixmap>
#include <QTextStream>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace quillon::tour
{

namespace
{

void print(const QString& line)
{
    QTextStream out(stdout);
    out << line << Qt::endl;
}

/// Lets paint events and timers of zero length run.
void settle()
{
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < 60)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
}

QMessageBox::StandardButton buttonOf(Answer answer)
{
    switch (answer) {
    case Answer::Ok:
        return QMessageBox::Ok;
    case Answer::Yes:
        return QMessageBox::Yes;
    case Answer::No:
        return QMessageBox::No;
    case Answer::Cancel:
        break;
    }
    return QMessageBox::Cancel;
}

} // namespace

Guide::Guide(const QString& pictureFolder) : m_pictureFolder(pictureFolder)
{
    QDir().mkpath(pictureFolder);
}

void Guide::say(const QString& step)
{
    print(u"%1. "_s.arg(++m_step, 2) + step);
}

void Guide::picture(QWidget& window, const QString& name)
{
    settle();
    const QString path = m_pictureFolder + u'/' + name + u".png"_s;
    if (window.grab().save(path))
        print(u"      "_s + QDir().relativeFilePath(path));
    else
        complain(u"画像を保存できません: "_s + path);
}

void Guide::complain(const QString& what)
{
    m_succeeded = false;
    print(u"    ! "_s + what);
}

void GuidedDialogs::expectBox(const QString& text, Answer answer, const QString& picture)
{
    m_boxes.push_back({text, answer, picture});
}

Answer GuidedDialogs::messageBox(const MessageBox& box)
{
    Step step{box.text, Answer::Cancel, {}};
    if (m_boxes.empty()) {
        m_guide.complain(u"予定にないメッセージ: "_s + box.text);
    } else {
        step = m_boxes.front();
        m_boxes.pop_front();
        if (step.text != box.text)
            m_guide.complain(u"予定と違うメッセージ: "_s + box.text);
    }
    QTimer::singleShot(100, qApp, [this, step] {
        auto* shown = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (shown == nullptr) {
            m_guide.complain(u"メッセージが表示されていません。"_s);
            return;
        }
        if (!step.picture.isEmpty())
            m_guide.picture(*shown, step.picture);
        if (QAbstractButton* button = shown->button(buttonOf(step.answer)))
            button->click();
        else
            shown->reject();
    });
    return RealDialogs::messageBox(box);
}

void GuidedDialogs::expectInput(const QString& text, const QString& picture)
{
    m_inputs.push_back({text, Answer::Ok, picture});
}

std::optional<QString> GuidedDialogs::inputBox(const InputBox& box)
{
    Step step{{}, Answer::Cancel, {}};
    if (m_inputs.empty()) {
        m_guide.complain(u"予定にない入力: "_s + box.prompt);
    } else {
        step = m_inputs.front();
        m_inputs.pop_front();
    }
    QTimer::singleShot(100, qApp, [this, step] {
        auto* shown = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        if (shown == nullptr) {
            m_guide.complain(u"入力の画面が表示されていません。"_s);
            return;
        }
        shown->setTextValue(step.text);
        if (!step.picture.isEmpty())
            m_guide.picture(*shown, step.picture);
        if (step.answer == Answer::Ok)
            shown->accept();
        else
            shown->reject();
    });
    return RealDialogs::inputBox(box);
}

std::optional<QString> GuidedDialogs::fileDialog(const FileDialog&)
{
    if (m_files.empty()) {
        m_guide.complain(u"予定にないファイルの選択です。"_s);
        return std::nullopt;
    }
    const QString path = m_files.front();
    m_files.pop_front();
    return path;
}

} // namespace quillon::tour
