#include "html_text.h"

#include "characters.h"

namespace results {

std::string html(const QString &text)
{
    return QString::fromStdString(escaped(text.toStdString())).toHtmlEscaped().toStdString();
}

std::string html_facts(const told_facts &facts)
{
    std::string out = "<dl class=\"facts\">\n";
    for (const auto &[name, text] : facts) {
        if (!text.isEmpty())
            out += "<dt>" + html(name) + "</dt><dd>" + html(text) + "</dd>\n";
    }
    return out + "</dl>\n";
}

std::string html_table(const QStringList &head, const QList<QStringList> &lines)
{
    std::string out = "<div class=\"scroll\"><table class=\"facts\">\n<thead><tr>";
    for (const QString &name : head)
        out += "<th scope=\"col\">" + html(name) + "</th>";
    out += "</tr></thead>\n<tbody>\n";
    for (const QStringList &line : lines) {
        out += "<tr>";
        for (const QString &text : line)
            out += "<td>" + html(text) + "</td>";
        out += "</tr>\n";
    }
    return out + "</tbody></table></div>\n";
}

std::string html_folded(const QString &title, const std::string &content)
{
    return "<details><summary>" + html(title) + "</summary>\n" + content + "</details>\n";
}

std::string html_warning(const QString &title, const QStringList &items)
{
    std::string out = "<div class=\"warning\"><strong>" + html(title) + "</strong>";
    if (!items.isEmpty())
        out += "\n<ul>\n";
    for (const QString &item : items)
        out += "<li>" + html(item) + "</li>\n";
    return out + (items.isEmpty() ? "</div>\n" : "</ul></div>\n");
}

} // namespace results
