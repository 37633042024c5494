#include "hive_image.h"

#include "hive_base_block.h"
#include "log_format.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

using namespace regf;

namespace {

void put_number(QByteArray &bytes, qint64 offset, quint32 number)
{
    qToLittleEndian(number, bytes.data() + offset);
}

std::vector<page_reference> sorted(std::vector<page_reference> pages)
{
    std::sort(pages.begin(), pages.end(),
              [](const page_reference &a, const page_reference &b) { return a.offset < b.offset; });
    return pages;
}

} // namespace

hive_image::hive_image(QByteArray bytes, qint64 told_length)
    : m_bytes(std::move(bytes)), m_told_length(told_length)
{
}

qint64 hive_image::longest_hole_from(qint64 offset) const
{
    return offset < m_told_length ? 0 : longest_bin;
}

bool hive_image::would_have_hole(const page_batch &batch) const
{
    const qint64 length = first_bin + qint64(batch.bins_size);
    if (length <= m_bytes.size())
        return false;
    qint64 filled = m_bytes.size();
    for (const page_reference &page : sorted(batch.pages)) {
        const qint64 begin = first_bin + qint64(page.offset);
        if (begin > filled + longest_hole_from(filled))
            return true;
        filled = std::max(filled, begin + page.size);
    }
    return length > filled + longest_hole_from(filled);
}

void hive_image::apply(const page_batch &batch)
{
    m_bins_size = batch.bins_size;
    const qint64 length = first_bin + qint64(m_bins_size);
    if (length > m_bytes.size())
        m_bytes.resize(length, '\0');
    const char *content = batch.content.data();
    for (const page_reference &page : batch.pages) {
        std::memcpy(m_bytes.data() + first_bin + page.offset, content, page.size);
        content += page.size;
    }
}

QByteArray hive_image::finished(const QByteArray &fields, quint32 sequence, quint32 flags) &&
{
    std::memcpy(m_bytes.data(), fields.constData(), size_t(base_block::fields));
    put_number(m_bytes, base_block::primary_sequence, sequence);
    put_number(m_bytes, base_block::secondary_sequence, sequence);
    put_number(m_bytes, base_block::file_type, base_block::type_of_hive);
    put_number(m_bytes, base_block::bins_size, m_bins_size);
    put_number(m_bytes, base_block::flags, flags);
    put_number(m_bytes, base_block::checksum,
               hive_base_block::checksum_of(m_bytes.first(base_block::fields)));
    return std::move(m_bytes);
}
