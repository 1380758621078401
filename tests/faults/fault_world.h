#pragma once

#include "app/base/ports/dialogs.h"
#include "store/kept/keeping.h"
#include "store/opening.h"
#include "store/session.h"
#include "tests/faults/model.h"
#include "tests/support/test_ports.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace quillon::testing
{

/// Dialogs that answer every box with its first button and remember its text: nobody knows beforehand what a failing
/// disk leads to.
class PatientDialogs : public Dialogs
{
public:
    Answer messageBox(const MessageBox& box) override;
    std::optional<QString> inputBox(const InputBox& box) override;
    std::optional<QString> fileDialog(const FileDialog& dialog) override;

    QStringList texts;
};

/// A program without windows that works in a folder.
class FaultWorld
{
public:
    explicit FaultWorld(const QString& folder);
    ~FaultWorld();
    FaultWorld(const FaultWorld&) = delete;
    FaultWorld& operator=(const FaultWorld&) = delete;

    /// What came of an operation.
    enum class Outcome {
        Done,    // and nothing went wrong
        Failed,  // and that was told
        Refused, // another program held the file, and that was told
        Silent   // it was not done, and nobody was told
    };

    Outcome open(const QString& name);
    Outcome create(const QString& name);
    /// Lets go of the database, as the end of the program does.
    void close();
    Outcome perform(const Step& step);
    /// The same for what is no step: it answers whether it has been done.
    Outcome perform(const std::function<bool()>& operation);
    /// From the next opening on what is overwritten and deleted is kept, in the folder "kept". No copies are made by
    /// themselves.
    void keep();
    kept::Place place() const;

    /// What the program itself takes for the content of its database.
    Model seen();
    /// Whether all record sets stand on the open database.
    bool isOfOnePiece() const;
    /// What has been told since the last operation began.
    const QStringList& told() const { return dialogs.texts; }
    QString path(const QString& name) const;

    QString folder;
    PatientDialogs dialogs;
    MemoryEventLog eventLog;
    FixedClock clock;
    RecordingDesktop desktop;
    RealFiles files;
    FakeWindows windows;
    FakeMainWindow mainWindow;
    Session session;
    std::unique_ptr<kept::Keeping> keeping;

private:
    template <class Operation> Outcome outcomeOf(Operation&& operation);
    bool run(const Step& step);
    bool registerFile(const Step& step, const QString& category);
};

/// Prepares a folder for worlds of `actors` programs: the files that can be registered, and the folder for registered
/// ones. Answers what "QUILLON.mdb", which it creates there, holds.
Model prepareFolder(const QString& folder, int actors = 1);

/// Whether every file of RefFile that the model names is there with its content; else what is wrong.
QString filesProblem(const QString& folder, const Model& model);

/// The seed of this run: QUILLON_SEED, else another one each time. Printed, so that a failure can be repeated.
std::mt19937::result_type seedOfRun();

/// A number from the environment, for runs that are longer than every day's.
int numberFromEnvironment(const char* name, int otherwise);

} // namespace quillon::testing
