#include "demo_parts.h"

#include <QStringView>

namespace demo {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

/// A subkey of an Uninstall key; an empty text means that the value is absent.
struct application
{
    QStringView key;
    qint64 last_write; ///< Unix seconds
    QStringView display_name;
    QStringView display_version;
    QStringView publisher;
    QStringView install_location;
    QStringView install_date;
    QStringView install_source;
    QStringView url_info_about;
    QStringView uninstall_string;
};

constexpr application applications_64[] = {
    {u"7-Zip", 1698746521, u"7-Zip 23.01 (x64)", u"23.01", u"Igor Pavlov",
     u"C:\\Program Files\\7-Zip\\", u"", u"", u"https://www.7-zip.org/",
     u"\"C:\\Program Files\\7-Zip\\Uninstall.exe\""},
    {u"AddressBook", 1575709944, u"", u"", u"", u"", u"", u"", u"", u""},
    {u"Fenmoor Ledger_is1", 1699263904, u"Fenmoor Ledger 5.2", u"5.2.118", u"Fenmoor Software Ltd",
     u"C:\\Program Files\\Fenmoor Ledger\\", u"20231106", u"", u"https://ledger.example/support",
     u"\"C:\\Program Files\\Fenmoor Ledger\\unins000.exe\""},
    {u"GIMP-2_is1", 1702289170, u"GIMP 2.10.36-1", u"2.10.36", u"The GIMP Team",
     u"C:\\Program Files\\GIMP 2\\", u"20231211", u"", u"https://www.gimp.org/",
     u"\"C:\\Program Files\\GIMP 2\\uninst\\unins000.exe\""},
    {u"Git_is1", 1701424820, u"Git", u"2.43.0", u"The Git Development Community",
     u"C:\\Program Files\\Git\\", u"20231201", u"", u"https://gitforwindows.org/",
     u"\"C:\\Program Files\\Git\\unins000.exe\""},
    {u"Mozilla Firefox 121.0 (x64 en-US)", 1703067155, u"Mozilla Firefox (x64 en-US)", u"121.0",
     u"Mozilla", u"C:\\Program Files\\Mozilla Firefox", u"", u"", u"https://www.mozilla.org",
     u"\"C:\\Program Files\\Mozilla Firefox\\uninstall\\helper.exe\""},
    {u"Notepad++", 1700646072, u"Notepad++ (64-bit x64)", u"8.6", u"Notepad++ Team",
     u"C:\\Program Files\\Notepad++\\", u"", u"", u"https://notepad-plus-plus.org/",
     u"\"C:\\Program Files\\Notepad++\\uninstall.exe\""},
    {u"VeraCrypt", 1700132761, u"VeraCrypt", u"1.26.7", u"IDRIX", u"C:\\Program Files\\VeraCrypt",
     u"", u"", u"https://www.veracrypt.fr",
     u"\"C:\\Program Files\\VeraCrypt\\VeraCrypt Setup.exe\" /u"},
    {u"VLC media player", 1699352388, u"VLC media player", u"3.0.20", u"VideoLAN",
     u"C:\\Program Files\\VideoLAN\\VLC", u"", u"", u"https://www.videolan.org/",
     u"\"C:\\Program Files\\VideoLAN\\VLC\\uninstall.exe\""},
    {u"Wireshark", 1700468330, u"Wireshark 4.2.0 x64", u"4.2.0",
     u"The Wireshark developer community, https://www.wireshark.org",
     u"C:\\Program Files\\Wireshark", u"", u"", u"https://www.wireshark.org",
     u"\"C:\\Program Files\\Wireshark\\uninstall-wireshark.exe\""},
    {u"{4640FDE1-B83A-4376-84ED-86F86BEE2D41}", 1700558217, u"PuTTY release 0.80 (64-bit)",
     u"0.80.0.0", u"Simon Tatham", u"C:\\Program Files\\PuTTY\\", u"20231121",
     u"C:\\Users\\anna\\Downloads\\", u"https://www.chiark.greenend.org.uk/~sgtatham/putty/",
     u"MsiExec.exe /X{4640FDE1-B83A-4376-84ED-86F86BEE2D41}"},
    {u"{6C1E4B8B-0D0F-4B6E-9C1E-6E1B6D2C7A55}", 1702461601, u"LibreOffice 7.6.4.1", u"7.6.4.1",
     u"The Document Foundation", u"C:\\Program Files\\LibreOffice\\", u"20231213",
     u"C:\\Users\\marek\\Downloads\\", u"https://www.libreoffice.org/",
     u"MsiExec.exe /I{6C1E4B8B-0D0F-4B6E-9C1E-6E1B6D2C7A55}"},
    {u"{A1C31BA5-5438-3A07-9EEE-A5FB2D0FDE36}", 1699261130,
     u"Microsoft Visual C++ 2022 X64 Minimum Runtime - 14.36.32532", u"14.36.32532",
     u"Microsoft Corporation", u"", u"20231106",
     u"C:\\ProgramData\\Package Cache\\{A1C31BA5-5438-3A07-9EEE-A5FB2D0FDE36}v14.36.32532\\"
     u"packages\\vcRuntimeMinimum_amd64\\",
     u"", u"MsiExec.exe /I{A1C31BA5-5438-3A07-9EEE-A5FB2D0FDE36}"},
};

constexpr application applications_32[] = {
    {u"Audacity_is1", 1702374467, u"Audacity 2.4.2", u"2.4.2", u"Audacity Team",
     u"C:\\Program Files (x86)\\Audacity\\", u"20231212", u"", u"http://audacityteam.org",
     u"\"C:\\Program Files (x86)\\Audacity\\unins000.exe\""},
    {u"FileZilla Client", 1700817209, u"FileZilla 3.66.4", u"3.66.4", u"Tim Kosse",
     u"C:\\Program Files (x86)\\FileZilla FTP Client", u"", u"", u"https://filezilla-project.org/",
     u"\"C:\\Program Files (x86)\\FileZilla FTP Client\\uninstall.exe\""},
    {u"Scanlight_is1", 1699266028, u"Scanlight Document Capture", u"3.1.0.42",
     u"Brackwater Imaging GmbH", u"C:\\Program Files (x86)\\Scanlight\\", u"20231106",
     u"\\\\fileserver\\install\\scanlight\\", u"https://scanlight.example",
     u"\"C:\\Program Files (x86)\\Scanlight\\unins000.exe\""},
    {u"WinMerge_is1", 1700735401, u"WinMerge 2.16.36.0 (x86)", u"2.16.36.0",
     u"Thingamahoochie Software", u"C:\\Program Files (x86)\\WinMerge\\", u"20231123", u"",
     u"https://winmerge.org/", u"\"C:\\Program Files (x86)\\WinMerge\\unins000.exe\""},
    {u"winscp3_is1", 1701087312, u"WinSCP 6.1.2", u"6.1.2", u"Martin Prikryl",
     u"C:\\Program Files (x86)\\WinSCP\\", u"20231127", u"", u"https://winscp.net/",
     u"\"C:\\Program Files (x86)\\WinSCP\\unins000.exe\""},
    {u"{F7B3E0B1-52E1-4A4A-9B0B-3B7C1A8B7E10}", 1703167840, u"Tidewater VPN Client", u"2.9.3",
     u"Tidewater Networks Inc.", u"C:\\Program Files (x86)\\Tidewater VPN\\", u"20231221",
     u"C:\\Windows\\Temp\\tidewater\\", u"https://vpn.example/help",
     u"MsiExec.exe /X{F7B3E0B1-52E1-4A4A-9B0B-3B7C1A8B7E10}"},
};

struct registered_application
{
    QStringView name;
    QStringView capabilities;
};

constexpr registered_application registered_applications[] = {
    {u"File Explorer", u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Capabilities"},
    {u"Internet Explorer", u"SOFTWARE\\Microsoft\\Internet Explorer\\Capabilities"},
    {u"Paint", u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Applets\\Paint\\Capabilities"},
    {u"Wordpad", u"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Wordpad\\Capabilities"},
    {u"Microsoft Edge", u"Software\\Clients\\StartMenuInternet\\Microsoft Edge\\Capabilities"},
    {u"Firefox-308046B0AF4A39CB",
     u"Software\\Clients\\StartMenuInternet\\Firefox-308046B0AF4A39CB\\Capabilities"},
    {u"VLC", u"Software\\Clients\\Media\\VLC\\Capabilities"},
    {u"LibreOffice", u"Software\\LibreOffice\\UNO\\Capabilities"},
};

void add_text(hive_key &key, const QString &name, QStringView text)
{
    if (!text.isEmpty())
        key.text(name, text.toString());
}

void add_application(hive_key &uninstall, const application &entry)
{
    hive_key &key = uninstall.add_key(entry.key.toString());
    add_text(key, u"DisplayName"_s, entry.display_name);
    add_text(key, u"DisplayVersion"_s, entry.display_version);
    add_text(key, u"Publisher"_s, entry.publisher);
    add_text(key, u"InstallLocation"_s, entry.install_location);
    add_text(key, u"InstallDate"_s, entry.install_date);
    add_text(key, u"InstallSource"_s, entry.install_source);
    add_text(key, u"URLInfoAbout"_s, entry.url_info_about);
    add_text(key, u"UninstallString"_s, entry.uninstall_string);
    if (!entry.display_name.isEmpty())
        key.dword(u"NoModify"_s, 1).dword(u"EstimatedSize"_s, 5632);
    key.last_write_unix(entry.last_write);
}

} // namespace

void add_software(evidence_volume &volume)
{
    hive_builder &hive = volume.software();
    const QString uninstall = u"Microsoft\\Windows\\CurrentVersion\\Uninstall"_s;
    for (const application &entry : applications_64)
        add_application(hive.key(uninstall), entry);
    for (const application &entry : applications_32)
        add_application(hive.key(u"WOW6432Node\\"_s + uninstall), entry);
    hive_key &registered = hive.key(u"RegisteredApplications"_s);
    for (const registered_application &entry : registered_applications)
        registered.text(entry.name.toString(), entry.capabilities.toString());
    hive.key(u"Microsoft\\Windows NT\\CurrentVersion"_s)
        .text(u"ProductName"_s, u"Windows 10 Pro"_s)
        .text(u"CurrentBuild"_s, u"19045"_s);
    hive.sort_subkeys();
}

} // namespace demo
