#ifndef SQLITE_HELPERS_H
#define SQLITE_HELPERS_H

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>

namespace test_support {

/// The caller that every helper gets.
extern const QString helpers_caller;

/// A statement that the fruit database answers, and one that it does not.
extern const QString good_command;
extern const QString bad_command;

/// What a helper is asked for; a helper by path takes the path, one by reference the connection.
struct helper_request
{
    QString command;
    QStringList bind_values;
    QString path;
    QSqlDatabase database;
};

/// How a helper finds its database.
enum class helper_reach
{
    by_path,
    by_reference
};

/// One member of the library's family of SQLite helpers: how it is called and what it logs, texts
/// to the letter.
struct sqlite_helper
{
    const char *name;
    helper_reach how;
    bool binds;
    bool lists;
    std::function<QStringList(helper_request &)> call; // rows; a bool is {"true"} or {"false"}
    QString connection_prefix;
    QStringList open_failure;  // the three openings of its lines
    QStringList query_failure; // the four openings of its lines
    QString end_line;
};

/// Every member of the family.
const QList<sqlite_helper> &sqlite_helpers();

/// A bool as helpers' calls show it.
QStringList as_list(bool value);

/// The openings of the lines of a helper by path whose database does not open.
extern const QStringList spaced_open_failure;

/// A database file with a table of fruits, and an open connection to it.
class fruit_database
{
public:
    fruit_database();
    ~fruit_database();
    Q_DISABLE_COPY_MOVE(fruit_database)

    /// The database file, and a path in a folder that does not exist.
    QString path() const;
    QString absent_path() const;
    /// A request of the command over the open connection.
    helper_request make(const QString &command, const QStringList &values = {}) const;
    /// Runs one statement; throws std::runtime_error where that fails.
    void run(const QString &command) const;
    /// What Qt says of a statement that is prepared and then executed, whatever came of the first.
    QString execution_error(const QString &command, const QStringList &values = {}) const;
    /// What Qt says of a database whose folder is absent.
    QString open_error() const;

    QSqlDatabase database;

private:
    QTemporaryDir m_folder;
};

} // namespace test_support

#endif
