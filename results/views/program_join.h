#ifndef PROGRAM_JOIN_H
#define PROGRAM_JOIN_H

#include <QHash>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>
#include <vector>

#include "column.h"
#include "program_paths.h"

namespace results {

/// A row of a table, as it is cited.
struct row_reference
{
    QString table;
    qint64 id = 0;
};

/// An Uninstall key.
struct installation
{
    QString source;
    QString account; ///< empty: installed for all
    QString name;
    QString version;
    QString publisher;
    QString install_date;
    qint64 key_written = 0;
    QString location;
    QString uninstall_command;
    row_reference row;
};

/// A row that tells of a program by its path or name: it was run, seen, or has a package folder.
struct program_use
{
    QString source;
    QString account;
    QString name;    ///< decoded
    QString path;    ///< comparable; empty for names that are no paths
    QString package; ///< family name of the package; empty for other programs
    bool is_shortcut = false;
    bool is_hash = false; ///< the path stands for the folder that the hash is of
    bool is_package_folder = false;
    bool is_counted = false; ///< whether count and time are told
    qint64 run_count = 0;
    qint64 last_run = 0;
    row_reference row;
};

/// The columns of the rows that program_join makes.
QList<column> columns_of_programs();

/// Joins installations and uses to programs, one for each program and account.
class program_join
{
public:
    /// Installations are added before uses.
    void add_installation(const installation &added);
    void add_use(const program_use &added) { m_uses.push_back(added); }

    /// The programs in the order of their names. To be called once.
    std::vector<row> rows();

private:
    /// A program, and the account that a row of the view is about.
    struct program_key
    {
        QString source;
        QString program;
        QString account;

        bool operator<(const program_key &other) const;
    };

    /// What uses of one program by one account tell together.
    struct usage
    {
        const program_use *first = nullptr;
        std::optional<qint64> run_count;
        std::optional<qint64> shortcut_count;
        qint64 last_run = 0;
        bool is_uninstaller_seen = false;
        qint64 uninstaller_last_run = 0;
        bool has_package_folder = false;
        QStringList rules;
        QList<row_reference> rows;
    };

    /// What a use is joined with, and by which rule.
    struct joined
    {
        QString program; ///< a key: "key:3" of an installation, "path:...", "package:...", ...
        QString rule;    ///< empty if the use stands alone
    };

    void note_folders_of_uninstallers();
    joined program_of(const program_use &use) const;
    joined program_by_folder(const program_use &use) const;
    std::optional<qsizetype> installation_in(const QString &folder, const program_use &use) const;
    std::optional<qsizetype> installation_named(const program_use &use) const;
    void add_to(usage &into, const program_use &use, const QString &rule);
    row row_of(const program_key &key, const usage &of) const;

    QList<installation> m_installations;
    QMultiHash<QString, qsizetype> m_by_location; ///< installations by source and folder
    QMultiHash<QString, qsizetype> m_by_name;
    QHash<QString, QString> m_uninstaller_folders; ///< of programs without a key
    std::vector<program_use> m_uses;
};

} // namespace results

#endif
