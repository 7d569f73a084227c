// FNV-1a, 64 bits: the hash behind the export's UIDs and the sync's digests of to-dos. Numbers
// go in big-endian so that a hash is the same on every host.
#ifndef PINDLE_FNV_HASH_H
#define PINDLE_FNV_HASH_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

class FnvHash {
public:
    void add(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; i++) {
            hash_ ^= bytes[i];
            hash_ *= 0x100000001b3ULL;
        }
    }
    void addInt(long long value) {
        unsigned char bytes[8];
        auto u = static_cast<unsigned long long>(value);
        for (int i = 7; i >= 0; i--, u >>= 8)
            bytes[i] = static_cast<unsigned char>(u);
        add(bytes, sizeof bytes);
    }
    // With its terminator, so that moving bytes between neighbouring fields changes the hash.
    void addText(const std::string& text) { add(text.c_str(), text.size() + 1); }
    std::uint64_t value() const { return hash_; }

    // The low 32 bits of the hash of some numbers, or of one text: what the sync keeps of a
    // field, on either side, to tell later whether that side changed it.
    static std::uint32_t digest(std::initializer_list<long long> values) {
        FnvHash hash;
        for (long long v : values)
            hash.addInt(v);
        return static_cast<std::uint32_t>(hash.value());
    }
    static std::uint32_t digest(const std::string& text) {
        FnvHash hash;
        hash.addText(text);
        return static_cast<std::uint32_t>(hash.value());
    }

private:
    std::uint64_t hash_ = 0xcbf29ce484222325ULL;
};

#endif
