#include "unread_places.h"

using namespace Qt::StringLiterals;

void unread_places::places::note(unsigned long node, const path_function &path)
{
    if (nodes.isEmpty())
        first = path();
    nodes.insert(node);
}

/// "the content of FIRST", or "the content of FIRST and of N more keys".
QString unread_places::places::content() const
{
    const qsizetype more = nodes.size() - 1;
    return "the content of "_L1 + first +
           (more == 0 ? QString() : u" and of %1 more keys"_s.arg(more));
}

void unread_places::note_hidden(const QString &key_path, const path_function &parent)
{
    if (m_hidden.isEmpty())
        m_hidden = u"the keys in %1 cannot be listed, so %2 is not read"_s.arg(parent(), key_path);
}

void unread_places::note_unlisted(unsigned long node, const path_function &path)
{
    m_unlisted.note(node, path);
}

void unread_places::note_unnamed(unsigned long node, const path_function &path)
{
    m_unnamed.note(node, path);
}

void unread_places::note_repeated(const path_function &path)
{
    if (m_repeated.isEmpty())
        m_repeated = path();
}

QStringList unread_places::sentences() const
{
    QStringList sentences;
    if (!m_hidden.isEmpty())
        sentences.append(m_hidden);
    if (!m_unlisted.nodes.isEmpty())
        sentences.append(m_unlisted.content() + " cannot be listed, so it is not read"_L1);
    if (!m_repeated.isEmpty())
        sentences.append(
            u"%1 is listed more than once, so part of it may not be read"_s.arg(m_repeated));
    if (!m_unnamed.nodes.isEmpty())
        sentences.append(m_unnamed.content() +
                         " holds names that cannot be read, so part is not read"_L1);
    return sentences;
}
