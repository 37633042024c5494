#ifndef HTML_TEXT_H
#define HTML_TEXT_H

#include <QList>
#include <QString>
#include <QStringList>

#include <string>
#include <string_view>
#include <utility>

namespace results {

/// A text for HTML, between tags or in an attribute with double quotes. What cannot be seen, or
/// could reorder a line, is an escape (\u202e).
std::string html(const QString &text);

/// A name and what is told under it.
using told_facts = QList<std::pair<QString, QString>>;

/// The facts as a list, without those that are empty. Texts are escaped here.
std::string html_facts(const told_facts &facts);

/// A table of texts with a header.
std::string html_table(const QStringList &head, const QList<QStringList> &lines);

/// HTML under a title, to be unfolded.
std::string html_folded(const QString &title, const std::string &content);

/// A warning with a list of what it is about.
std::string html_warning(const QString &title, const QStringList &items);

} // namespace results

#endif
