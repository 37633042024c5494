#include "demo_parts.h"
#include "user_assist.h"

#include <QStringView>

namespace demo {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

constexpr QStringView explorer = u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";
constexpr QStringView compatibility_store =
    u"Software\\Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags\\Compatibility Assistant\\Store";
constexpr QStringView programs_class = u"{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}";
constexpr QStringView shortcuts_class = u"{F4E57C4B-2036-45F0-A9AB-443BCFE33D9F}";

/// A UserAssist entry; programs below a known folder begin with that folder's class id.
struct executed
{
    QStringView account;
    QStringView class_id;
    QStringView name;
    quint32 run_count;
    qint64 last_run; ///< Unix seconds; 0: never
};

constexpr executed executed_programs[] = {
    {u"anna", programs_class, u"Microsoft.Windows.Explorer", 61, 1703749861},
    {u"anna", programs_class, u"{6D809377-6AF0-444B-8957-A3773F02200E}\\7-Zip\\7zFM.exe", 9,
     1703670012},
    {u"anna", programs_class, u"308046B0AF4A39CB", 118, 1703752244},
    {u"anna", programs_class, u"{1AC14E77-02E7-4E5D-B744-2EB1AE5198B7}\\notepad.exe", 23,
     1703597430},
    {u"anna", programs_class, u"{6D809377-6AF0-444B-8957-A3773F02200E}\\PuTTY\\putty.exe", 14,
     1703673881},
    {u"anna", programs_class, u"{7C5A40EF-A0FB-4BFC-874A-C0F2E0B9FA8E}\\WinSCP\\WinSCP.exe", 31,
     1703674220},
    {u"anna", programs_class, u"C:\\Users\\anna\\Downloads\\npp.8.6.Installer.x64.exe", 1,
     1700646049},
    {u"anna", programs_class,
     u"{7C5A40EF-A0FB-4BFC-874A-C0F2E0B9FA8E}\\Harbourview Sync\\uninstall.exe", 1, 1703087713},
    {u"anna", programs_class,
     u"{6D809377-6AF0-444B-8957-A3773F02200E}\\Wireshark\\uninstall-wireshark.exe", 1, 1700468114},
    {u"anna", programs_class, u"Microsoft.WindowsCalculator_8wekyb3d8bbwe!App", 4, 1703160054},
    {u"anna", shortcuts_class, u"{0139D44E-6AFE-49F2-8690-3DAFCAE6FFB8}\\Firefox.lnk", 37,
     1703752240},
    {u"anna", shortcuts_class,
     u"{9E3995AB-1F9C-4F13-B827-48B24B6C7174}\\TaskBar\\File Explorer.lnk", 52, 1703749860},
    {u"marek", programs_class, u"Microsoft.Windows.Explorer", 28, 1703236310},
    {u"marek", programs_class,
     u"{6D809377-6AF0-444B-8957-A3773F02200E}\\LibreOffice\\program\\soffice.exe", 44, 1703238125},
    {u"marek", programs_class, u"{6D809377-6AF0-444B-8957-A3773F02200E}\\VideoLAN\\VLC\\vlc.exe",
     12, 1703190941},
    {u"marek", programs_class, u"{6D809377-6AF0-444B-8957-A3773F02200E}\\VeraCrypt\\VeraCrypt.exe",
     6, 1703232987},
    {u"marek", programs_class, u"{1AC14E77-02E7-4E5D-B744-2EB1AE5198B7}\\cmd.exe", 3, 0},
    {u"marek", programs_class, u"E:\\tools\\shredder\\uninstall.exe", 2, 1703233410},
    {u"marek", shortcuts_class,
     u"{0139D44E-6AFE-49F2-8690-3DAFCAE6FFB8}\\LibreOffice\\LibreOffice Writer.lnk", 19,
     1703238121},
    {u"scanner desk", programs_class, u"Microsoft.Windows.Explorer", 7, 1699871520},
    {u"scanner desk", programs_class,
     u"{7C5A40EF-A0FB-4BFC-874A-C0F2E0B9FA8E}\\Scanlight\\scanlight.exe", 203, 1703690417},
};

/// A program that the Compatibility Assistant has seen a user run.
struct assisted
{
    QStringView account;
    QStringView path;
};

constexpr assisted assisted_programs[] = {
    {u"anna", u"C:\\Users\\anna\\Downloads\\npp.8.6.Installer.x64.exe"},
    {u"anna", u"C:\\Program Files\\PuTTY\\putty.exe"},
    {u"anna", u"C:\\Program Files (x86)\\WinSCP\\WinSCP.exe"},
    {u"anna", u"C:\\Program Files (x86)\\Harbourview Sync\\uninstall.exe"},
    {u"anna", u"D:\\setup.exe"},
    {u"marek", u"C:\\Program Files\\VeraCrypt\\VeraCrypt.exe"},
    {u"marek", u"C:\\Program Files\\LibreOffice\\program\\soffice.exe"},
    {u"marek", u"E:\\tools\\shredder\\shredder.exe"},
    {u"scanner desk", u"C:\\Program Files (x86)\\Scanlight\\scanlight.exe"},
};

/// A desktop item of a user; the name stands in the user's own NameSpace key, or nowhere.
struct desktop_item
{
    QStringView account;
    QStringView class_id;
    QStringView name;
    bool is_hidden;
};

constexpr desktop_item desktop_items[] = {
    {u"anna", u"{018D5C66-4533-4307-9B53-224DE2ED1FE6}", u"OneDrive", true},
    {u"anna", u"{59031A47-3F72-44A7-89C5-5595FE6B30EE}", u"", false},
    {u"anna", u"{9F2B6C1E-3C0D-4E57-8E0A-5D1C2A7B9E44}", u"Nextcloud", true},
    {u"marek", u"{018D5C66-4533-4307-9B53-224DE2ED1FE6}", u"OneDrive", true},
    {u"marek", u"{20D04FE0-3AEA-1069-A2D8-08002B30309D}", u"", false},
    {u"marek", u"{E31EA727-12ED-4702-820C-4B6445F28E1A}", u"Dropbox", false},
    {u"scanner desk", u"{018D5C66-4533-4307-9B53-224DE2ED1FE6}", u"OneDrive", true},
};

hive_key &explorer_key(evidence_volume &volume, QStringView account, const QString &path)
{
    return volume.user(account.toString()).key(explorer.toString() + path);
}

hive_key &count_key(evidence_volume &volume, QStringView account, QStringView class_id)
{
    return explorer_key(volume, account, u"UserAssist\\"_s + class_id.toString() + u"\\Count"_s);
}

// Windows keeps the session's totals of each class in an entry of its own.
void add_session(evidence_volume &volume, const executed &entry)
{
    constexpr qsizetype session_data_size = 1612;
    hive_key &count = count_key(volume, entry.account, entry.class_id);
    if (!count.has_values())
        count.binary(rotated_name(u"UEME_CTLSESSION"_s), QByteArray(session_data_size, '\0'));
}

void add_executed(evidence_volume &volume, const executed &entry)
{
    add_session(volume, entry);
    const qint64 last_run = entry.last_run == 0 ? 0 : filetime_of_unix(entry.last_run);
    count_key(volume, entry.account, entry.class_id)
        .binary(rotated_name(entry.name.toString()), user_assist_data(entry.run_count, last_run));
}

void add_assisted(evidence_volume &volume, const assisted &entry)
{
    const QByteArray signed_data = "SACP\x01\0\0\0"_ba;
    volume.user(entry.account.toString())
        .key(compatibility_store.toString())
        .binary(entry.path.toString(), signed_data.leftJustified(56, '\0'));
}

void add_desktop_item(evidence_volume &volume, const desktop_item &entry)
{
    const QString class_id = entry.class_id.toString();
    for (const QString &menu : {u"ClassicStartMenu"_s, u"NewStartPanel"_s})
        explorer_key(volume, entry.account, u"HideDesktopIcons\\"_s + menu)
            .dword(class_id, entry.is_hidden ? 1 : 0);
    if (!entry.name.isEmpty())
        explorer_key(volume, entry.account, u"Desktop\\NameSpace\\"_s + class_id)
            .text(u""_s, entry.name.toString());
}

} // namespace

void add_users(evidence_volume &volume)
{
    for (const executed &entry : executed_programs)
        add_executed(volume, entry);
    for (const assisted &entry : assisted_programs)
        add_assisted(volume, entry);
    for (const desktop_item &entry : desktop_items)
        add_desktop_item(volume, entry);
    const QStringList accounts = volume.accounts();
    for (const QString &account : accounts)
        volume.user(account).sort_subkeys();
}

} // namespace demo
