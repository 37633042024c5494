#ifndef RECENT_NAMES_H
#define RECENT_NAMES_H

#include <QByteArray>
#include <QString>

#include <array>

/// The value names of the key that was read last, as texts. Keys of one kind, such as those of the
/// installed applications, name their values alike and in the same order, so that most names need
/// not be decoded again.
class recent_names
{
public:
    /// The text of the UTF-8 `name` of a key's value number `position`.
    QString text_of(const char *name, qsizetype position)
    {
        if (position >= static_cast<qsizetype>(m_names.size()))
            return QString::fromUtf8(name);
        known_name &known = m_names[static_cast<size_t>(position)];
        if (known.utf8 != name)
            known = {name, QString::fromUtf8(name)};
        return known.text;
    }

private:
    struct known_name
    {
        QByteArray utf8;
        QString text{QLatin1StringView("")}; ///< never null
    };

    std::array<known_name, 16> m_names; ///< an application has 8 to 15
};

#endif
