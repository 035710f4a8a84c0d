#include "LinkCommands.h"

#include "CaptureDecoder.h"
#include "OptionValue.h"

#include <QByteArray>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>

#ifdef Q_OS_WIN
#    include <fcntl.h>
#    include <io.h>
#endif

namespace {

template <typename... Values> int fail(int status, const char *format, Values... values)
{
    std::fprintf(stderr, format, values...);
    return status;
}

QByteArray hex(const std::vector<unsigned char> &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size())).toHex();
}

// Flushed line by line, so that a capture in the making can be watched.
void printFrame(const CapturedFrame &frame)
{
    std::printf("%10llu  %6zu  %-5s  %s\n", frame.offset, frame.payload.size(),
                frame.intact ? "good" : "wrong", hex(frame.payload).constData());
    std::fflush(stdout);
}

void printTotals(const CaptureTotals &totals)
{
    std::printf("frames: %llu, good: %llu, with a wrong CRC: %llu\n", totals.intact + totals.damaged,
                totals.intact, totals.damaged);
    std::printf("bytes: %llu, discarded: %llu (noise before the first delimiter: %llu, too short: %llu, "
                "unfinished: %llu)\n",
                totals.bytes, totals.discarded(), totals.noise, totals.tooShort, totals.unfinished);
}

// Byte by byte, because that takes what a pipe holds without waiting for a full buffer. Returns whether the
// input could be read to its end.
bool decode(std::FILE *input)
{
    std::puts("    offset  length  CRC    payload");
    CaptureDecoder decoder(printFrame);
    for (int byte = std::getc(input); byte != EOF; byte = std::getc(input))
        decoder.feed(static_cast<unsigned char>(byte));
    const bool complete = std::ferror(input) == 0;
    printTotals(decoder.totals());
    return complete;
}

bool isHex(const QByteArray &text)
{
    return text.size() % 2 == 0 && QByteArray::fromHex(text).toHex() == text.toLower();
}

} // namespace

int runDecode()
{
    const QByteArray path = QFile::encodeName(optionValue("--decode"));
    std::FILE *input = path.isEmpty() ? stdin : std::fopen(path.constData(), "rb");
#ifdef Q_OS_WIN
    _setmode(_fileno(stdin), _O_BINARY); // it would translate line ends and stop at Ctrl+Z
#endif
    const char *name = path.isEmpty() ? "Standard input" : path.constData();
    if (input == nullptr)
        return fail(1, "%s cannot be read: %s.\n", name, std::strerror(errno));
    const bool complete = decode(input);
    const int error = errno;
    if (input != stdin)
        std::fclose(input);
    return complete ? 0 : fail(1, "%s cannot be read: %s.\n", name, std::strerror(error));
}

int runEncode()
{
    const QByteArray text = optionValue("--encode").toLatin1();
    if (!isHex(text))
        return fail(2, "\"%s\" is not hexadecimal: give two digits for each byte.\n", text.constData());
    const QByteArray bytes = QByteArray::fromHex(text);
    std::vector<unsigned char> message(bytes.begin(), bytes.end());
    std::vector<unsigned char> frame;
    if (!Communication::LogicalLinkControl(255).encode_message(message, frame))
        return fail(2, "A message has 1 to 255 bytes, not %d.\n", int(bytes.size()));
    std::puts(hex(frame).constData());
    return 0;
}
