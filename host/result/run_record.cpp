#include "run_record.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

#include <algorithm>
#include <cstdio>

#include "characters.h"
#include "recorded_runs.h"

using namespace Qt::StringLiterals;

namespace {

/// JSON in which no text can steer a terminal or look like another one: what the console escapes,
/// but for line feeds, which JSON has between its texts alone.
QByteArray written(const QJsonObject &record)
{
    QByteArray bytes = QJsonDocument(record).toJson();
    if (std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte > 0 && byte < 0x7f; }))
        return bytes; // JSON itself escapes the controls below the blank
    QString safe;
    const QString json = QString::fromUtf8(bytes);
    for (qsizetype i = 0; i < json.size(); ++i) {
        const QChar character = json.at(i);
        const bool is_pair =
            character.isHighSurrogate() && i + 1 < json.size() &&
            !results::must_be_escaped(QChar::surrogateToUcs4(character, json.at(i + 1)));
        if (is_pair)
            safe += json.mid(i++, 2);
        else if (character != u'\n' && results::must_be_escaped(character.unicode()))
            safe += u"\\u%1"_s.arg(character.unicode(), 4, 16, QChar(u'0'));
        else
            safe += character;
    }
    return safe.toUtf8();
}

/// An entry that nobody completed: its process is gone, or it would hold the lock.
QJsonObject as_left_behind(QJsonObject entry)
{
    if (entry.value("outcome"_L1).toString() == "running"_L1)
        entry.insert("outcome"_L1, u"killed"_s);
    return entry;
}

/// A name beside the file that nothing bears yet.
QString free_name(const QString &file)
{
    for (int number = 1;; ++number) {
        const QFileInfo candidate(file + u".damaged-%1"_s.arg(number));
        if (!candidate.exists() && !candidate.isSymLink())
            return candidate.filePath();
    }
}

} // namespace

run_record::run_record(const QString &file) : m_file(file)
{
    read();
}

void run_record::read()
{
    const results::recorded_runs read = results::read_recorded_runs(m_file);
    m_damage = read.damage;
    for (const QJsonObject &entry : read.runs)
        m_earlier.append(as_left_behind(entry));
}

QString run_record::begin(const QJsonObject &entry)
{
    const QString failure = m_damage.isEmpty() ? QString() : move_aside();
    return failure.isEmpty() ? write(entry) : failure;
}

QString run_record::complete(const QJsonObject &entry)
{
    // Somebody may have put a link there, which would be followed.
    if (QFileInfo(m_file).isSymLink())
        return u"it was exchanged by a link during the run"_s;
    return write(entry);
}

QString run_record::move_aside()
{
    const QString name = free_name(m_file);
    // Moves links and folders too, and never what a link leads to.
    if (std::rename(QFile::encodeName(m_file).constData(), QFile::encodeName(name).constData()) !=
        0)
        return u"what lies there cannot be set aside"_s;
    m_set_aside = name;
    return {};
}

QString run_record::write(const QJsonObject &entry) const
{
    QJsonArray runs;
    for (const QJsonObject &earlier : m_earlier)
        runs.append(earlier);
    runs.append(entry);
    const QByteArray text = written({{"format"_L1, results::run_record_format}, {"runs"_L1, runs}});
    QSaveFile file(m_file);
    // commit() does not notice when what is still buffered finds no room on the disk.
    const bool is_written = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() &&
                            file.flush() && file.error() == QFileDevice::NoError && file.commit();
    return is_written ? QString() : file.errorString();
}
