#include "demo_parts.h"

#include <QStringView>

namespace demo {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

struct package
{
    QStringView account;
    QStringView name;
};

constexpr package packages[] = {
    {u"anna", u"Microsoft.MicrosoftEdge.Stable_8wekyb3d8bbwe"},
    {u"anna", u"Microsoft.Windows.Photos_8wekyb3d8bbwe"},
    {u"anna", u"Microsoft.WindowsCalculator_8wekyb3d8bbwe"},
    {u"anna", u"Microsoft.WindowsStore_8wekyb3d8bbwe"},
    {u"anna", u"SpotifyAB.SpotifyMusic_zpdnekdrzrea0"},
    {u"anna", u"TelegramMessengerLLP.TelegramDesktop_t4vj0pshhgkwm"},
    {u"marek", u"5319275A.WhatsAppDesktop_cv1g1gvanyjgm"},
    {u"marek", u"Microsoft.MicrosoftEdge.Stable_8wekyb3d8bbwe"},
    {u"marek", u"Microsoft.WindowsCalculator_8wekyb3d8bbwe"},
    {u"marek", u"Microsoft.WindowsStore_8wekyb3d8bbwe"},
    {u"scanner desk", u"Microsoft.MicrosoftEdge.Stable_8wekyb3d8bbwe"},
    {u"scanner desk", u"Microsoft.WindowsStore_8wekyb3d8bbwe"},
};

constexpr QStringView package_folders[] = {u"AC", u"LocalState", u"RoamingState", u"Settings"};

struct program
{
    QStringView path;
    qint64 modified; ///< Unix seconds
};

constexpr program programs[] = {
    {u"Program Files (x86)/Scanlight/scanlight.exe", 1687859340},
    {u"Program Files (x86)/WinSCP/WinSCP.exe", 1695294216},
    {u"Program Files/7-Zip/7zFM.exe", 1687248000},
    {u"Program Files/LibreOffice/program/soffice.exe", 1701865320},
    {u"Program Files/PuTTY/putty.exe", 1702835411},
    {u"Program Files/VeraCrypt/VeraCrypt.exe", 1696077330},
    {u"Users/anna/Downloads/npp.8.6.Installer.x64.exe", 1700646031},
};

// The two letters and the padding with which a program file begins.
QByteArray program_bytes()
{
    return "MZ\x90\0\x03\0\0\0"_ba.leftJustified(128, '\0');
}

} // namespace

void add_packages(evidence_volume &volume)
{
    for (const package &entry : packages) {
        for (const QStringView folder : package_folders)
            volume.package(entry.account.toString(), u"%1/%2"_s.arg(entry.name, folder));
    }
}

void add_programs(evidence_volume &volume)
{
    for (const program &entry : programs)
        volume.file(entry.path.toString(), program_bytes(), entry.modified);
}

} // namespace demo
