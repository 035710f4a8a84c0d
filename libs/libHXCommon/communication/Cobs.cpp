#include "Cobs.h"

#include "EightBytes.h"

#include <algorithm>

namespace Communication::Cobs {

namespace {

using Byte = unsigned char;

// A block of the longest run: its code byte is also its length, and no zero follows it.
constexpr std::ptrdiff_t fullBlock = longestRun + 1;
constexpr std::ptrdiff_t step = EightBytes::count;

// A code byte is the distance to the next zero.
void setCode(Byte *code, const Byte *zero)
{
    *code = static_cast<Byte>(zero - code);
}

// Makes the zeros among eight bytes, copied from `in` to `out`, the code bytes of the blocks behind them.
// `code` is the open code byte before, returned is the open one after. The open code byte is set at every
// byte, and only a zero opens another one: that takes no branch, which random data would mislead.
inline Byte *stuffZeros(Byte *code, const Byte *in, Byte *out)
{
    if (EightBytes::load(in) == 0) {
        setCode(code, out);
        std::memset(out, 1, EightBytes::count);
        return out + step - 1;
    }
    for (std::ptrdiff_t i = 0; i < step; ++i) {
        setCode(code, out + i);
        code = in[i] == 0 ? out + i : code;
    }
    return code;
}

// Copies eight bytes and stuffs their zeros, if there are any.
inline Byte *copyEight(Byte *code, const Byte *in, Byte *out)
{
    std::memcpy(out, in, EightBytes::count);
    return EightBytes::zeros(in) == 0 ? code : stuffZeros(code, in, out);
}

Byte *copyBytes(Byte *code, const Byte *in, const Byte *last, Byte *out)
{
    for (; in != last; ++in, ++out) {
        *out = *in;
        if (*in == 0) {
            setCode(code, out);
            code = out;
        }
    }
    return code;
}

// Copies bytes that all have room in the open block, and stuffs their zeros. Most data has few: sixteen bytes
// without any cost one branch, and the last few are copied once more together with those before them.
inline Byte *copyRun(Byte *code, const Byte *in, const Byte *last, Byte *out)
{
    const bool endsInEight = last - in >= step && EightBytes::zeros(last - step) == 0;
    for (; last - in >= 2 * step; in += 2 * step, out += 2 * step) {
        if ((EightBytes::zeros(in) | EightBytes::zeros(in + step)) == 0) {
            std::memcpy(out, in, 2 * EightBytes::count);
        } else {
            code = copyEight(code, in, out);
            code = copyEight(code, in + step, out + step);
        }
    }
    if (last - in >= step) {
        code = copyEight(code, in, out);
        in += step;
        out += step;
    }
    if (!endsInEight)
        return copyBytes(code, in, last, out);
    std::memcpy(out + (last - in) - step, last - step, EightBytes::count);
    return code;
}

// Passes blocks without data, each of which is a zero: eight at a time while there are that many.
// Deliberate: the code byte 0 counts as 1.
const Byte *skipEmptyBlocks(const Byte *code, const Byte *end, Byte *out)
{
    for (; end - code > step && EightBytes::load(code) == EightBytes::allOne; code += step, out += step)
        std::memset(out, 0, EightBytes::count);
    for (; end - code > 1 && *code <= 1; ++code)
        *out++ = 0;
    return code;
}

// Follows the code bytes from `in` on and writes the zeros they stand for into the copy of the bytes behind
// `in`. Returns the code byte at which that stops: of a full block, or of one that does not end before `end`.
const Byte *restoreZeros(const Byte *in, const Byte *end, Byte *out)
{
    for (const Byte *code = in;;) {
        code = skipEmptyBlocks(code, end, out + (code - in));
        const std::ptrdiff_t length = *code;
        if (length == fullBlock || end - code <= std::max<std::ptrdiff_t>(length, 1))
            return code;
        code += length;
        out[code - in - 1] = 0;
    }
}

// Decodes the bytes from `in` on, all of which but the first have been copied to `out`: the code bytes stand
// where the zeros go. Only a full block has no zero behind it: what follows moves up by one byte, and is
// copied again in windows, not all of it for every full block. Returns the end of the result.
Byte *decodeCopied(const Byte *in, const Byte *last, Byte *out)
{
    constexpr std::ptrdiff_t window = 2 * fullBlock;
    for (const Byte *end = last;;) {
        const Byte *code = restoreZeros(in, end, out);
        const bool full = *code == fullBlock && end - code >= fullBlock;
        // Deliberate: a block that is cut short counts as far as it goes.
        if (!full && end == last)
            return out + (end - in - 1);
        out += code - in + (full ? fullBlock - 1 : 0);
        in = code + (full ? fullBlock : 0);
        if (in == last)
            return out;
        end = in + std::min(last - in, window);
        std::memcpy(out, in + 1, static_cast<std::size_t>(end - in - 1));
    }
}

} // namespace

Byte *encode(const Byte *in, std::size_t size, Byte *out)
{
    const Byte *last = in + size;
    Byte *code = out++;
    while (in != last) {
        const std::ptrdiff_t count = std::min(last - in, fullBlock - (out - code));
        code = copyRun(code, in, in + count, out);
        in += count;
        out += count;
        if (out - code == fullBlock) {
            // Deliberate: a full block opens another one, also where the input ends.
            setCode(code, out);
            code = out++;
        }
    }
    setCode(code, out);
    return out;
}

void appendDecoded(const std::vector<Byte> &in, std::vector<Byte> &out)
{
    const std::size_t start = out.size();
    out.insert(out.end(), in.begin() + 1, in.end()); // far cheaper than resize
    const Byte *end = decodeCopied(in.data(), in.data() + in.size(), out.data() + start);
    out.resize(static_cast<std::size_t>(end - out.data()));
}

} // namespace Communication::Cobs
