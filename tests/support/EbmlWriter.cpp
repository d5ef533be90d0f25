#include "support/EbmlWriter.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace testing_support {

namespace {

[[noreturn]] void Misuse(const std::string& what) {
    std::fprintf(stderr, "EbmlWriter: %s\n", what.c_str());
    std::abort();
}

int NibbleOf(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(digit)));
    if (lower >= 'a' && lower <= 'f') return lower - 'a' + 10;
    Misuse(std::string("not a hex digit: ") + digit);
}

void Append(Bytes* out, const Bytes& more) {
    out->insert(out->end(), more.begin(), more.end());
}

Bytes IdBytes(uint32_t elementId) {
    const int width = elementId > 0xFFFFFF ? 4 : elementId > 0xFFFF ? 3 : elementId > 0xFF ? 2 : 1;
    return BigEndian(elementId, width);
}

}  // namespace

Bytes Hex(const std::string& digits) {
    Bytes out;
    int high = -1;
    for (char digit : digits) {
        if (std::isspace(static_cast<unsigned char>(digit))) continue;
        const int nibble = NibbleOf(digit);
        if (high < 0) {
            high = nibble;
        } else {
            out.push_back(static_cast<uint8_t>(high << 4 | nibble));
            high = -1;
        }
    }
    if (high >= 0) Misuse("half a byte in " + digits);
    return out;
}

std::string ToHex(const uint8_t* data, size_t size) {
    static const char kDigits[] = "0123456789abcdef";
    std::string out;
    for (size_t i = 0; i < size; ++i) {
        out += kDigits[data[i] >> 4];
        out += kDigits[data[i] & 15];
    }
    return out;
}

std::string ToHex(const Bytes& bytes) {
    return ToHex(bytes.data(), bytes.size());
}

Bytes Text(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

Bytes Pattern(size_t size, uint8_t seed) {
    Bytes out(size);
    for (size_t i = 0; i < size; ++i) out[i] = static_cast<uint8_t>(seed * 17 + i * 7 + (i >> 8));
    return out;
}

Bytes Concat(const std::vector<Bytes>& parts) {
    Bytes out;
    for (const Bytes& part : parts) Append(&out, part);
    return out;
}

Bytes BigEndian(uint64_t value, int width) {
    Bytes out;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        out.push_back(static_cast<uint8_t>(value >> shift));
    return out;
}

Bytes Vint(uint64_t value, int width) {
    if (width == 0) {
        width = 1;
        while (width < 8 && value >= (1ull << 7 * width) - 1) ++width;
    }
    Bytes out = BigEndian(value, width);
    if (value >> 7 * width) Misuse("value too large for its size field");
    out[0] = static_cast<uint8_t>(out[0] | 0x80 >> (width - 1));
    return out;
}

Bytes UnknownVint(int width) {
    Bytes out(static_cast<size_t>(width), 0xFF);
    out[0] = static_cast<uint8_t>(0xFF >> (width - 1));
    return out;
}

Bytes SignedVint(int64_t value, int width) {
    auto bias = [](int bytes) { return (1ll << (7 * bytes - 1)) - 1; };
    if (width == 0) {
        width = 1;
        while (value < -bias(width) || value > bias(width)) ++width;
    }
    return Vint(static_cast<uint64_t>(value + bias(width)), width);
}

Element Element::Label(std::string name) const {
    Element copy = *this;
    copy.mLabel = std::move(name);
    return copy;
}

Element Element::SizeWidth(int width) const {
    Element copy = *this;
    copy.mSizeWidth = width;
    return copy;
}

Element Element::UnknownSize(int width) const {
    Element copy = *this;
    copy.mUnknownSize = true;
    copy.mSizeWidth = width;
    return copy;
}

Element Element::DeclaredSize(uint64_t size) const {
    Element copy = *this;
    copy.mDeclaredSize = size;
    return copy;
}

Element Element::Header(Bytes header) const {
    Element copy = *this;
    copy.mHeader = std::move(header);
    return copy;
}

Element Master(uint32_t elementId, Elements children) {
    return Element(elementId, std::move(children));
}

Element Uint(uint32_t elementId, uint64_t value, int width) {
    if (width == 0) {
        width = 1;
        while (width < 8 && value >> 8 * width) ++width;
    }
    return Element(elementId, BigEndian(value, width));
}

Element Int(uint32_t elementId, int64_t value, int width) {
    return Element(elementId, BigEndian(static_cast<uint64_t>(value), width));
}

Element Flt(uint32_t elementId, double value) {
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return Element(elementId, BigEndian(bits, 8));
}

Element Flt4(uint32_t elementId, float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return Element(elementId, BigEndian(bits, 4));
}

Element Str(uint32_t elementId, const std::string& value) {
    return Element(elementId, Text(value));
}

Element Bin(uint32_t elementId, Bytes value) {
    return Element(elementId, std::move(value));
}

Element Raw(Bytes bytes) {
    return Element(0, std::move(bytes)).Header({});
}

Element PositionOf(uint32_t elementId, std::string label) {
    Element element(elementId, Bytes(8));
    element.mTarget = std::move(label);
    return element;
}

Element IdValue(uint32_t elementId, uint32_t value) {
    return Element(elementId, IdBytes(value));
}

// Sizes first, from the leaves up; then the bytes; positions are filled in once every label has its place.
class Writer {
  public:
    Document Run(const Elements& elements) {
        for (const Element& element : elements) Emit(Measure(element), 0);
        for (const Fixup& fixup : mFixups) {
            const Bytes position = BigEndian(mDocument.HeaderOf(fixup.target) - fixup.base, 8);
            std::copy(position.begin(), position.end(),
                      mDocument.bytes.begin() + static_cast<long>(fixup.at));
        }
        return std::move(mDocument);
    }

  private:
    struct Fixup {
        uint64_t at, base;
        std::string target;
    };
    struct Measured {
        const Element* element;
        Bytes header;
        uint64_t size;  // of header and payload
        std::vector<Measured> children;
    };

    static Bytes HeaderOf(const Element& element, uint64_t payloadSize) {
        if (element.mHeader) return *element.mHeader;
        const uint64_t size = element.mDeclaredSize.value_or(payloadSize);
        return Concat({IdBytes(element.mId), element.mUnknownSize ? UnknownVint(element.mSizeWidth)
                                                                  : Vint(size, element.mSizeWidth)});
    }

    static Measured Measure(const Element& element) {
        Measured measured{&element, {}, element.mPayload.size(), {}};
        for (const Element& child : element.mChildren) {
            measured.children.push_back(Measure(child));
            measured.size += measured.children.back().size;
        }
        measured.header = HeaderOf(element, measured.size);
        measured.size += measured.header.size();
        return measured;
    }

    void Emit(const Measured& measured, uint64_t segmentData) {
        const Element& element = *measured.element;
        Bytes* const out = &mDocument.bytes;
        Document::Place place;
        place.header = out->size();
        Append(out, measured.header);
        place.data = out->size();
        if (element.mId == id::kSegment) segmentData = place.data;
        if (!element.mTarget.empty()) mFixups.push_back({place.data, segmentData, element.mTarget});
        Append(out, element.mPayload);
        for (const Measured& child : measured.children) Emit(child, segmentData);
        place.end = out->size();
        if (element.mLabel.empty()) return;
        if (!mDocument.places.emplace(element.mLabel, place).second) {
            Misuse("label used twice: " + element.mLabel);
        }
    }

    Document mDocument;
    std::vector<Fixup> mFixups;
};

const Document::Place& Document::At(const std::string& label) const {
    const auto found = places.find(label);
    if (found == places.end()) Misuse("no such label: " + label);
    return found->second;
}

Document Write(const Elements& elements) {
    return Writer().Run(elements);
}

}  // namespace testing_support
