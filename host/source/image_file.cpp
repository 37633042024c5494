#include "image_file.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 sector = 512;
constexpr qint64 looked_at = 2 * sector;

/// A kind of file that holds a volume, known by bytes at some place in it.
struct image_kind
{
    qint64 offset;
    QByteArrayView mark;
    QLatin1StringView name;
    QLatin1StringView way; ///< to mount it; FILE stands for its path
};

constexpr auto by_ewf =
    "mount it read-only, for example by \"ewfmount FILE /mnt/image && mount -o ro,loop "
    "/mnt/image/ewf1 /mnt/volume\""_L1;
constexpr auto by_guest =
    "mount it read-only, for example by \"guestmount --ro -a FILE -i /mnt/volume\""_L1;
constexpr auto by_zip = "mount it read-only, for example by \"fuse-zip -r FILE /mnt/volume\""_L1;
constexpr auto by_archive = "mount it read-only, for example by \"archivemount -o readonly FILE "
                            "/mnt/volume\""_L1;
constexpr auto by_loop =
    "mount it read-only, for example by \"mount -o ro,loop FILE /mnt/volume\""_L1;
constexpr auto by_parts = "mount it read-only, for example by \"losetup --read-only --partscan "
                          "--find --show FILE\" and \"mount -o ro /dev/loop0p2 /mnt/volume\""_L1;
constexpr auto by_affuse =
    "mount it read-only, for example by \"affuse FILE /mnt/image && mount -o ro,loop "
    "/mnt/image/*.raw /mnt/volume\""_L1;
constexpr auto by_unpacking = "unpack it first, for example by \"gunzip --keep FILE\""_L1;
constexpr auto by_key =
    "unlock it read-only, for example by \"cryptsetup open --type bitlk --readonly FILE volume\" "
    "and \"mount -o ro /dev/mapper/volume /mnt/volume\""_L1;

// Marks of containers come first: the last ones stand in many files.
constexpr image_kind kinds[] = {
    {0, "EVF\x09\x0d\x0a\xff", "an EWF image (E01)"_L1, by_ewf},
    {0, "EVF2\x0d\x0a\x81", "an EWF image (Ex01)"_L1, by_ewf},
    {0, "vhdxfile", "a VHDX disk"_L1, by_guest},
    {0, "conectix", "a VHD disk"_L1, by_guest},
    {0, "KDMV", "a VMDK disk"_L1, by_guest},
    {0, "QFI\xfb", "a QCOW disk"_L1, by_guest},
    {0, "PK\x03\x04", "a ZIP archive"_L1, by_zip},
    {0, "PK\x05\x06", "an empty ZIP archive"_L1, by_zip},
    {0, "7z\xbc\xaf\x27\x1c", "a 7-Zip archive"_L1, by_archive},
    {0, "\x1f\x8b", "a gzip archive"_L1, by_unpacking},
    {0, QByteArrayView("AFF10\r\n\0", 8), "an AFF image"_L1, by_affuse},
    {257, "ustar", "a tar archive"_L1, by_archive},
    {0, "regf", "a registry hive"_L1, "give the folder of the volume that it belongs to"_L1},
    {3, "NTFS    ", "the image of an NTFS volume"_L1, by_loop},
    {3, "EXFAT   ", "the image of an exFAT volume"_L1, by_loop},
    {82, "FAT32   ", "the image of a FAT32 volume"_L1, by_loop},
    {3, "-FVE-FS-", "the image of a BitLocker volume"_L1, by_key},
    {sector, "EFI PART", "the image of a disk (GPT)"_L1, by_parts},
    {510, "\x55\xaa", "the image of a disk (MBR)"_L1, by_parts},
};

bool is_of(const image_kind &kind, const QByteArray &bytes)
{
    return QByteArrayView(bytes).sliced(std::min(kind.offset, bytes.size())).startsWith(kind.mark);
}

QByteArray first_bytes_of(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    return file.read(looked_at);
}

} // namespace

QString advice_about(const QString &path)
{
    const QByteArray bytes = first_bytes_of(path);
    const auto kind =
        std::find_if(std::begin(kinds), std::end(kinds),
                     [&bytes](const image_kind &known) { return is_of(known, bytes); });
    if (kind == std::end(kinds))
        return u"mount or extract the volume first"_s;
    return u"it is %1; %2"_s.arg(kind->name, kind->way);
}
