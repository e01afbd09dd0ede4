#include <surveymsg/platform/Archive.h>

#include <surveymsg/platform/detail/Wire.h>

namespace surveymsg::detail {

void RaiseEndOfFile() { throw CArchiveException(CArchiveException::endOfFile); }

void RaiseFull() { throw CMemoryException(); }

std::uint32_t Reader::LongPrefix(std::uint64_t& prefix) const {
    Need(3);
    std::uint16_t word;
    std::memcpy(&word, cursor_ + 1, sizeof word);
    SwapOnBigEndian(word);
    prefix = 3;
    // The platform's mark of a wide text, which no message holds.
    if (word == kWideString) throw CArchiveException(CArchiveException::badSchema, "CMsg");
    if (word != kHugeString) return word;
    Need(7);
    std::uint32_t length;
    std::memcpy(&length, cursor_ + 3, sizeof length);
    SwapOnBigEndian(length);
    prefix = 7;
    return length;
}

}  // namespace surveymsg::detail

using surveymsg::detail::Reader;
using surveymsg::detail::Writer;

namespace {

Writer ToStore(CArchive& archive) {
    if (archive.IsLoading()) throw CArchiveException(CArchiveException::readOnly);
    return Writer(archive);
}

Reader ToLoad(CArchive& archive) {
    if (archive.IsStoring()) throw CArchiveException(CArchiveException::writeOnly);
    return Reader(archive);
}

}  // namespace

CArchive& CArchive::operator<<(std::uint8_t value) {
    ToStore(*this).Byte(value);
    return *this;
}
CArchive& CArchive::operator<<(std::uint16_t value) {
    ToStore(*this).Word(value);
    return *this;
}
CArchive& CArchive::operator<<(std::int32_t value) {
    ToStore(*this).Longs(value);
    return *this;
}
CArchive& CArchive::operator<<(std::uint32_t value) {
    ToStore(*this).Longs(value);
    return *this;
}
CArchive& CArchive::operator<<(double value) {
    ToStore(*this).Doubles(value);
    return *this;
}
CArchive& CArchive::operator<<(const CString& value) {
    ToStore(*this).String(value);
    return *this;
}
CArchive& CArchive::operator>>(std::uint8_t& value) {
    ToLoad(*this).Byte(value);
    return *this;
}
CArchive& CArchive::operator>>(std::uint16_t& value) {
    ToLoad(*this).Word(value);
    return *this;
}
CArchive& CArchive::operator>>(std::int32_t& value) {
    ToLoad(*this).Longs(value);
    return *this;
}
CArchive& CArchive::operator>>(std::uint32_t& value) {
    ToLoad(*this).Longs(value);
    return *this;
}
CArchive& CArchive::operator>>(double& value) {
    ToLoad(*this).Doubles(value);
    return *this;
}
CArchive& CArchive::operator>>(CString& value) {
    ToLoad(*this).String(value);
    return *this;
}
