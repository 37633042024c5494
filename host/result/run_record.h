#ifndef RUN_RECORD_H
#define RUN_RECORD_H

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

/// The record of the runs that wrote to one result folder: a JSON file beside the database with one
/// entry a run. An entry is written before its run begins, with the outcome "running", and
/// completed when it has ended. To be used while the folder's lock is held.
class run_record
{
public:
    /// Reads the file, if there is one. A file that is no record stays untouched for now.
    explicit run_record(const QString &file);

    /// Why the file is no record that this program can continue; empty when it is, or when there is
    /// none.
    const QString &damage() const { return m_damage; }

    /// The entries of the earlier runs, the first one first. A run whose process ended without a
    /// word has the outcome "killed".
    const QList<QJsonObject> &earlier() const { return m_earlier; }

    /// What became of a file that is no record: the name under which it stays. Empty if there was
    /// none.
    const QString &set_aside() const { return m_set_aside; }

    /// Writes the entry behind the earlier ones. Gives a file that is no record another name first.
    /// Returns why that failed, or an empty text.
    QString begin(const QJsonObject &entry);

    /// Writes the entry of the run anew. Returns why that failed, or an empty text.
    QString complete(const QJsonObject &entry);

private:
    void read();
    QString move_aside();
    QString write(const QJsonObject &entry) const;

    QString m_file;
    QString m_damage;
    QString m_set_aside;
    QList<QJsonObject> m_earlier;
};

#endif
