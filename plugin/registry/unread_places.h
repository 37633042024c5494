#ifndef UNREAD_PLACES_H
#define UNREAD_PLACES_H

#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

/// What a walk over a hive could not read of the keys that it lists. Each kind is one sentence: it
/// names the first place and counts the others.
class unread_places
{
public:
    /// Gives the path of a key for a sentence. Called for the first place of a kind only.
    using path_function = std::function<QString()>;

    /// `key_path` cannot be reached: the subkeys of the key at `parent` cannot be listed.
    void note_hidden(const QString &key_path, const path_function &parent);

    /// The subkeys or the values of the key `node` cannot be listed.
    void note_unlisted(unsigned long node, const path_function &path);

    /// The name of a subkey or a value of the key `node` cannot be read.
    void note_unnamed(unsigned long node, const path_function &path);

    /// A key is listed again below itself, and skipped.
    void note_repeated(const path_function &path);

    /// The sentences, without a final stop; none when everything was read.
    QStringList sentences() const;

private:
    /// Keys of one kind.
    struct places
    {
        QSet<unsigned long> nodes;
        QString first;

        void note(unsigned long node, const path_function &path);
        QString content() const;
    };

    QString m_hidden; ///< the whole sentence
    places m_unlisted;
    places m_unnamed;
    QString m_repeated;
};

#endif
