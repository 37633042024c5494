#include "sha256.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <memory>
#include <new>

#include <openssl/evp.h>

namespace {

constexpr qint64 most_of_a_part = 1 << 20;

struct context_deleter
{
    void operator()(EVP_MD_CTX *context) const { EVP_MD_CTX_free(context); }
};

/// OpenSSL uses the processor's instructions for SHA-256, which Qt's own code does not.
class running_hash
{
public:
    running_hash() : m_context(EVP_MD_CTX_new())
    {
        if (!m_context || EVP_DigestInit_ex(m_context.get(), EVP_sha256(), nullptr) != 1)
            throw std::bad_alloc();
    }

    void add(const char *bytes, qint64 size)
    {
        EVP_DigestUpdate(m_context.get(), bytes, static_cast<size_t>(size));
    }

    QString result()
    {
        std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
        unsigned int size = 0;
        EVP_DigestFinal_ex(m_context.get(), bytes.data(), &size);
        return QString::fromLatin1(
            QByteArray(reinterpret_cast<const char *>(bytes.data()), size).toHex());
    }

private:
    std::unique_ptr<EVP_MD_CTX, context_deleter> m_context;
};

} // namespace

QString sha256_of(QFile &file, const std::function<bool()> &is_cancelled)
{
    running_hash hash;
    const qint64 part_size = std::clamp<qint64>(file.size(), 1, most_of_a_part);
    QByteArray part(part_size, Qt::Uninitialized);
    qint64 size = 0;
    while ((size = file.read(part.data(), part_size)) > 0) {
        hash.add(part.constData(), size);
        if (is_cancelled())
            return {};
    }
    return size < 0 ? QString() : hash.result();
}

QString sha256_of_bytes(const QByteArray &bytes)
{
    running_hash hash;
    hash.add(bytes.constData(), bytes.size());
    return hash.result();
}

QString sha256_of(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    return sha256_of(file);
}
