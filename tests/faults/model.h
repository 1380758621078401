#pragma once

#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace quillon::testing
{

/// What a database is to hold, kept by simple means that have nothing in common with the program.
struct Model {
    struct Datum {
        QString name;
        QString content;
        bool operator==(const Datum&) const = default;
    };
    using Pair = std::pair<QString, QString>;

    std::map<QString, Datum> data;         // by identifier, of all three kinds
    std::set<Pair> links;                  // the lesser identifier first
    std::map<QString, QString> categories; // names by identifier
    std::set<Pair> memberships;            // category, datum

    bool operator==(const Model&) const = default;
};

/// Reads a database with nothing but SQLite and its own way to the files. Nothing, with `why`, when it is not whole.
std::optional<Model> readModel(const QString& path, QString& why);

/// The first difference in words; empty for none.
QString difference(const Model& actual, const Model& expected);

/// One operation of a person.
struct Step {
    enum class Kind {
        Register,
        RegisterFile,
        Update,
        Delete,
        DeleteMany,
        Link,
        Unlink,
        File,
        FileMany,
        Unfile,
        AddCategory,
        RenameCategory,
        DeleteCategory,
        RegisterToLink, // a file, for the datum at the other end
        MoveDown,       // into a category below one in which it is filed, and out of that one
        Count
    };
    Kind kind = Kind::Count;
    QString identifier; // of the datum; of the category where there is no datum
    QString other;      // the datum at the other end; the category
    QString name;
    QString content;
    QStringList many; // data, or the categories of a new datum

    QString described() const;
};

/// Who performs steps: several programs at once keep to identifiers of their own, so that it is known what each leaves.
struct Actor {
    int number = 0;
};

/// A step that is possible with what there is; seeded.
Step randomStep(std::mt19937& random, const Model& model, const Actor& actor);
/// The same of a given kind; nothing when it is not possible.
std::optional<Step> randomStep(Step::Kind kind, std::mt19937& random, const Model& model, const Actor& actor);

/// What a step leaves when it has been done.
Model after(const Step& step, const Model& before);

/// Whether a step that has told a failure may leave this. All or nothing; where the program promises no more than that each
/// part is whole: what is done without some of the parts. Those are the data of many, and the filings of a datum.
bool isPossibleAfterFailure(const Step& step, const Model& before, const Model& actual);

/// Some data, links and categories to begin with.
std::vector<Step> beginning(const Actor& actor);

/// The name of the n-th file that is there to be registered; its content is made of the name.
QString sourceFile(int number);
inline constexpr int SourceFiles = 6;

} // namespace quillon::testing
