#include "program_paths.h"

#include <QRegularExpression>
#include <QSet>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace results {

namespace {

struct default_folder
{
    QLatin1StringView variable;
    QLatin1StringView path; ///< "*" stands for the account
};

constexpr default_folder default_folders[] = {
    {"%programfiles%"_L1, "c:\\program files"_L1},
    {"%programfiles(x86)%"_L1, "c:\\program files (x86)"_L1},
    {"%systemroot%"_L1, "c:\\windows"_L1},
    {"%windir%"_L1, "c:\\windows"_L1},
    {"%systemdrive%"_L1, "c:"_L1},
    {"%programdata%"_L1, "c:\\programdata"_L1},
    {"%public%"_L1, "c:\\users\\public"_L1},
    {"%userprofile%"_L1, "c:\\users\\*"_L1},
    {"%appdata%"_L1, "c:\\users\\*\\appdata\\roaming"_L1},
    {"%localappdata%"_L1, "c:\\users\\*\\appdata\\local"_L1},
};

QString with_default_folder(const QString &path, const QString &account)
{
    for (const default_folder &folder : default_folders) {
        if (path.startsWith(folder.variable))
            return QString(folder.path).replace(u'*', account.toLower()) +
                   path.mid(folder.variable.size());
    }
    return path;
}

QString last_part(const QString &comparable)
{
    return comparable.mid(comparable.lastIndexOf(u'\\') + 1);
}

} // namespace

QString comparable_path(const QString &path, const QString &account)
{
    QString text = path.trimmed().toLower();
    text.remove(u'"').replace(u'/', u'\\');
    text = with_default_folder(text, account);
    while (text.endsWith(u'\\'))
        text.chop(1);
    const bool has_drive = text.size() >= 2 && text.at(1) == u':';
    return has_drive || text.startsWith("\\\\"_L1) ? text : QString();
}

QString folder_of(const QString &comparable)
{
    const qsizetype end = comparable.lastIndexOf(u'\\');
    return end <= 0 ? QString() : comparable.left(end);
}

bool is_shared_folder(const QString &comparable)
{
    static const QSet<QString> shared{
        u"c:\\program files"_s,
        u"c:\\program files (x86)"_s,
        u"c:\\program files\\common files"_s,
        u"c:\\program files (x86)\\common files"_s,
        u"c:\\programdata"_s,
        u"c:\\windows"_s,
        u"c:\\windows\\system32"_s,
        u"c:\\windows\\syswow64"_s,
        u"c:\\windows\\installer"_s,
        u"c:\\users"_s,
    };
    static const QRegularExpression profile(
        u"^c:\\\\users\\\\[^\\\\]+(\\\\(desktop|documents|downloads|appdata(\\\\[^\\\\]+)?"
        "(\\\\programs|\\\\temp)?))?$"_s);
    const qsizetype parts = comparable.count(u'\\');
    const bool is_network_root = comparable.startsWith("\\\\"_L1) && parts <= 3;
    return parts == 0 || is_network_root || shared.contains(comparable) ||
           profile.match(comparable).hasMatch();
}

QString folder_of_command(const QString &command)
{
    static const QRegularExpression program(u"^\\s*(?:\"([^\"]+)\"|(.+?\\.exe)\\b)"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = program.match(command);
    const QString path = match.captured(1).isEmpty() ? match.captured(2) : match.captured(1);
    const QString folder = folder_of(comparable_path(path, {}));
    return last_part(path.toLower()).startsWith("msiexec"_L1) ? QString() : folder;
}

bool is_uninstaller(const QString &comparable)
{
    const QString file = last_part(comparable);
    return file.startsWith("unins"_L1) || file.contains("uninstall"_L1);
}

QString comparable_name(const QString &display_name)
{
    static const QRegularExpression parentheses(u"\\([^)]*\\)"_s);
    static const QSet<QString> words_before_versions{u"version"_s, u"release"_s, u"-"_s, u"v"_s};
    QStringList words = display_name.toLower().remove(parentheses).split(u' ', Qt::SkipEmptyParts);
    for (qsizetype i = 1; i < words.size(); ++i) {
        if (words.at(i).at(0).isDigit())
            words.resize(i);
    }
    while (words.size() > 1 && words_before_versions.contains(words.last()))
        words.removeLast();
    return words.join(u' ');
}

QString name_of_shortcut(const QString &path)
{
    QString name = last_part(path);
    name.chop(4); // ".lnk"
    return name;
}

} // namespace results
