#ifndef FINDING_H
#define FINDING_H

#include <QList>
#include <QString>
#include <QStringList>

/// What the examiner should know about the evidence, in one line that begins with the path that it
/// is about. The text may hold names of the evidence unescaped.
struct finding
{
    // NOLINTNEXTLINE(google-explicit-constructor): a text alone tells of something that is not read
    finding(const QString &told, bool leaves_out = true) : text(told), is_left_out(leaves_out) {}

    QString text;
    bool is_left_out; ///< whether something that was to be read is not read, or not as a whole
};

/// Appends texts that each tell of something that is not read.
void append_left_out(QList<finding> &findings, const QStringList &texts);

/// Appends texts that the examiner should know, although everything is read.
void append_remarks(QList<finding> &findings, const QStringList &texts);

/// The findings' texts.
QStringList texts_of(const QList<finding> &findings);

/// Whether one of them tells of something that is not read.
bool is_any_left_out(const QList<finding> &findings);

/// The texts as they are shown: all of them, or if they are many, the first few of each kind and
/// how many more there are. A kind is what stands behind the path.
QStringList summed_up(const QStringList &texts);

#endif
