#include "platform/PropertyListReader.hpp"

#include <bit>
#include <cmath>
#include <cstring>

#include "platform/PropertyListText.hpp"

namespace veldan::platform {

namespace {

constexpr int64_t referenceDateMicroseconds = 978'307'200LL * 1'000'000;
// Dates are seconds since 2001 in a double, which resolves less than a microsecond up to
// 2^33 seconds (272 years) either side; the clock's nanoseconds reach 2262. Dates from
// 1747 to 2254 fit both.
constexpr double earliestDateSeconds = -8'000'000'000.0;
constexpr double latestDateSeconds = 8'000'000'000.0;

template <typename T>
T load(const char* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// Every value of the document is read through here, so the common widths are one load.
uint64_t readBigEndian(const char* at, unsigned bytes) {
    switch (bytes) {
        case 1:
            return static_cast<unsigned char>(*at);
        case 2:
            return __builtin_bswap16(load<uint16_t>(at));
        case 4:
            return __builtin_bswap32(load<uint32_t>(at));
        case 8:
            return __builtin_bswap64(load<uint64_t>(at));
        default: {
            uint64_t value = 0;
            for (unsigned i = 0; i < bytes; ++i) {
                value = (value << 8) | static_cast<unsigned char>(at[i]);
            }
            return value;
        }
    }
}

bool hasCount(unsigned type) {
    return type == 0x4 || type == 0x5 || type == 0x6 || type == 0xA || type == 0xC || type == 0xD;
}

void appendUtf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

}  // namespace

std::optional<PropertyListReader> PropertyListReader::open(std::string_view document) {
    constexpr size_t trailerBytes = 32;
    if (document.size() < 8 + 1 + 1 + trailerBytes) return std::nullopt;
    if (document.substr(0, 8) != "bplist00") return std::nullopt;
    const char* trailer = document.data() + document.size() - trailerBytes;
    PropertyListReader reader;
    reader.offsetSize_ = static_cast<unsigned char>(trailer[6]);
    reader.refSize_ = static_cast<unsigned char>(trailer[7]);
    reader.objectCount_ = readBigEndian(trailer + 8, 8);
    reader.root_ = readBigEndian(trailer + 16, 8);
    const uint64_t tableOffset = readBigEndian(trailer + 24, 8);
    if (reader.offsetSize_ < 1 || reader.offsetSize_ > 8) return std::nullopt;
    if (reader.refSize_ < 1 || reader.refSize_ > 8) return std::nullopt;
    if (reader.objectCount_ == 0 || reader.root_ >= reader.objectCount_) return std::nullopt;
    const uint64_t tableEnd = document.size() - trailerBytes;
    if (tableOffset < 9 || tableOffset > tableEnd) return std::nullopt;
    if (reader.objectCount_ > (tableEnd - tableOffset) / reader.offsetSize_) return std::nullopt;
    reader.begin_ = document.data();
    reader.objectsEnd_ = document.data() + tableOffset;
    reader.offsetTable_ = document.data() + tableOffset;
    return reader;
}

std::optional<PropertyListReader::Header> PropertyListReader::header(Object object) const {
    if (object.index_ >= objectCount_) return std::nullopt;
    const uint64_t offset = readBigEndian(offsetTable_ + object.index_ * offsetSize_, offsetSize_);
    if (offset < 8 || offset >= static_cast<uint64_t>(objectsEnd_ - begin_)) return std::nullopt;
    Header result;
    const char* at = begin_ + offset;
    result.marker = static_cast<unsigned char>(*at);
    result.count = result.marker & 0x0F;
    result.body = at + 1;
    if (hasCount(result.marker >> 4) && result.count == 0x0F) {
        if (result.body >= objectsEnd_) return std::nullopt;
        const auto intMarker = static_cast<unsigned char>(*result.body);
        if ((intMarker >> 4) != 0x1 || (intMarker & 0x0F) > 3) return std::nullopt;
        const unsigned width = 1u << (intMarker & 0x0F);
        if (static_cast<size_t>(objectsEnd_ - result.body) < 1 + width) return std::nullopt;
        result.count = readBigEndian(result.body + 1, width);
        if (result.count > static_cast<uint64_t>(INT64_MAX)) return std::nullopt;
        result.body += 1 + width;
    }
    return result;
}

PropertyListReader::Object PropertyListReader::reference(const char* at) const {
    const uint64_t index = readBigEndian(at, refSize_);
    return index < objectCount_ ? Object(index) : Object();
}

const char* PropertyListReader::containerRefs(const Header& header, uint64_t refs) const {
    const auto available = static_cast<uint64_t>(objectsEnd_ - header.body);
    if (refs > available / refSize_) return nullptr;
    return header.body;
}

PropertyListReader::Type PropertyListReader::type(Object object) const {
    auto found = header(object);
    if (!found) return Type::invalid;
    const uint8_t marker = found->marker;
    switch (marker >> 4) {
        case 0x0:
            return marker == 0x08 || marker == 0x09 ? Type::boolean : Type::other;
        case 0x1:
            return (marker & 0x0F) <= 4 ? Type::integer : Type::invalid;
        case 0x2:
            return marker == 0x22 || marker == 0x23 ? Type::real : Type::invalid;
        case 0x3:
            return marker == 0x33 ? Type::date : Type::invalid;
        case 0x4:
            return Type::data;
        case 0x5:
        case 0x6:
            return Type::string;
        case 0xA:
            return Type::array;
        case 0xD:
            return Type::dictionary;
        default:
            return Type::other;
    }
}

std::optional<bool> PropertyListReader::boolean(Object object) const {
    auto found = header(object);
    if (!found || (found->marker != 0x08 && found->marker != 0x09)) return std::nullopt;
    return found->marker == 0x09;
}

std::optional<int64_t> PropertyListReader::integer(Object object) const {
    auto found = header(object);
    if (!found || (found->marker >> 4) != 0x1 || (found->marker & 0x0F) > 4) return std::nullopt;
    const unsigned width = 1u << (found->marker & 0x0F);
    if (static_cast<size_t>(objectsEnd_ - found->body) < width) return std::nullopt;
    if (width < 8) return static_cast<int64_t>(readBigEndian(found->body, width));
    if (width == 8) return static_cast<int64_t>(readBigEndian(found->body, 8));
    const uint64_t high = readBigEndian(found->body, 8);
    const uint64_t low = readBigEndian(found->body + 8, 8);
    if (high == 0 && low <= static_cast<uint64_t>(INT64_MAX)) return static_cast<int64_t>(low);
    if (high == UINT64_MAX && low > static_cast<uint64_t>(INT64_MAX)) {
        return static_cast<int64_t>(low);
    }
    return std::nullopt;
}

std::optional<double> PropertyListReader::real(Object object) const {
    auto found = header(object);
    if (!found) return std::nullopt;
    const auto available = static_cast<size_t>(objectsEnd_ - found->body);
    if (found->marker == 0x22 && available >= 4) {
        return static_cast<double>(
            std::bit_cast<float>(static_cast<uint32_t>(readBigEndian(found->body, 4))));
    }
    if (found->marker == 0x23 && available >= 8) {
        return std::bit_cast<double>(readBigEndian(found->body, 8));
    }
    return std::nullopt;
}

std::optional<std::chrono::system_clock::time_point> PropertyListReader::date(Object object) const {
    auto found = header(object);
    if (!found || found->marker != 0x33) return std::nullopt;
    if (static_cast<size_t>(objectsEnd_ - found->body) < 8) return std::nullopt;
    const double seconds = std::bit_cast<double>(readBigEndian(found->body, 8));
    if (!std::isfinite(seconds) || seconds < earliestDateSeconds || seconds > latestDateSeconds) {
        return std::nullopt;
    }
    // Whole seconds and the fraction separately: both parts are exact, so the result is
    // the microsecond nearest to the stored value, and writing it again stores the same.
    const double whole = std::floor(seconds);
    const int64_t micros = static_cast<int64_t>(whole) * 1'000'000 +
                           std::llround((seconds - whole) * 1e6) + referenceDateMicroseconds;
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::microseconds(micros)));
}

std::optional<std::string> PropertyListReader::data(Object object) const {
    auto found = header(object);
    if (!found || (found->marker >> 4) != 0x4) return std::nullopt;
    if (found->count > static_cast<uint64_t>(objectsEnd_ - found->body)) return std::nullopt;
    return std::string(found->body, found->count);
}

std::optional<std::string> PropertyListReader::string(Object object,
                                                      size_t maximumCharacters) const {
    auto found = header(object);
    if (!found || found->count > maximumCharacters) return std::nullopt;
    const auto available = static_cast<uint64_t>(objectsEnd_ - found->body);
    if ((found->marker >> 4) == 0x5) {
        if (found->count > available) return std::nullopt;
        const std::string_view text(found->body, found->count);
        // Branch-free, so that the check runs at the speed of the copy.
        bool outside = false;
        for (unsigned char c : text)
            outside |= static_cast<unsigned char>(c - 1) >= 0x7F;
        if (outside) return std::nullopt;  // NUL, or not ASCII
        return std::string(text);
    }
    if ((found->marker >> 4) != 0x6 || found->count > available / 2) return std::nullopt;
    std::string text;
    text.reserve(found->count);
    for (uint64_t i = 0; i < found->count; ++i) {
        auto unit = static_cast<char32_t>(readBigEndian(found->body + 2 * i, 2));
        if (unit == 0 || (unit >= 0xDC00 && unit <= 0xDFFF)) return std::nullopt;
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            if (i + 1 >= found->count) return std::nullopt;
            const auto low = static_cast<char32_t>(readBigEndian(found->body + 2 * (i + 1), 2));
            if (low < 0xDC00 || low > 0xDFFF) return std::nullopt;
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
            ++i;
        }
        appendUtf8(text, unit);
    }
    return decodePropertyListText(text);
}

bool PropertyListReader::stringEquals(Object object, std::string_view ascii) const {
    auto found = header(object);
    if (!found || found->count != ascii.size()) return false;
    const auto available = static_cast<uint64_t>(objectsEnd_ - found->body);
    if ((found->marker >> 4) == 0x5) {
        return found->count <= available &&
               std::memcmp(found->body, ascii.data(), ascii.size()) == 0;
    }
    if ((found->marker >> 4) != 0x6 || found->count > available / 2) return false;
    for (size_t i = 0; i < ascii.size(); ++i) {
        if (readBigEndian(found->body + 2 * i, 2) != static_cast<unsigned char>(ascii[i]))
            return false;
    }
    return true;
}

std::optional<PropertyListReader::Array> PropertyListReader::array(Object object) const {
    auto found = header(object);
    if (!found || (found->marker >> 4) != 0xA) return std::nullopt;
    const char* refs = containerRefs(*found, found->count);
    if (!refs) return std::nullopt;
    Array result;
    result.reader_ = this;
    result.refs_ = refs;
    result.count_ = found->count;
    return result;
}

std::optional<PropertyListReader::Dictionary> PropertyListReader::dictionary(Object object) const {
    auto found = header(object);
    if (!found || (found->marker >> 4) != 0xD) return std::nullopt;
    if (found->count > static_cast<uint64_t>(INT64_MAX) / 2) return std::nullopt;
    const char* refs = containerRefs(*found, 2 * found->count);
    if (!refs) return std::nullopt;
    Dictionary result;
    result.reader_ = this;
    result.refs_ = refs;
    result.count_ = found->count;
    return result;
}

PropertyListReader::Object PropertyListReader::Array::operator[](size_t i) const {
    if (i >= count_) return Object();
    return reader_->reference(refs_ + i * reader_->refSize_);
}

PropertyListReader::Object PropertyListReader::Dictionary::key(size_t i) const {
    if (i >= count_) return Object();
    return reader_->reference(refs_ + i * reader_->refSize_);
}

PropertyListReader::Object PropertyListReader::Dictionary::value(size_t i) const {
    if (i >= count_) return Object();
    return reader_->reference(refs_ + (count_ + i) * reader_->refSize_);
}

}  // namespace veldan::platform
