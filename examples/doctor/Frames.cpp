#include "CaptureDecoder.h"
#include "CommandLine.h"
#include "Report.h"
#include "Tasks.h"
#include "Terminal.h"

#include <QFile>
#include <QRegularExpression>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

QByteArray hex(const std::vector<unsigned char> &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size())).toHex();
}

// Flushed line by line, so that a capture in the making can be watched.
void printFrame(const CapturedFrame &frame, bool asJson)
{
    const char *const crc = frame.intact ? "good" : "wrong";
    QByteArray payload = hex(frame.payload);
    if (asJson) {
        print(QJsonObject{{text("offset"), double(frame.offset)},
                          {text("length"), int(frame.payload.size())},
                          {text("crc"), text(crc)},
                          {text("payload"), QString::fromLatin1(payload)}},
              true);
    } else {
        const int most = outputWidth() - 27;
        if (most > 0 && payload.size() > most)
            payload = payload.left(most - 3) + "...";
        std::printf("%10llu  %6zu  %-5s  %s\n", frame.offset, frame.payload.size(), crc, payload.constData());
    }
    std::fflush(stdout);
}

void printTotals(const CaptureTotals &totals, bool asJson)
{
    if (asJson) {
        print(QJsonObject{{text("frames"), double(totals.intact + totals.damaged)},
                          {text("good"), double(totals.intact)},
                          {text("wrong_crc"), double(totals.damaged)},
                          {text("bytes"), double(totals.bytes)},
                          {text("noise"), double(totals.noise)},
                          {text("too_short"), double(totals.tooShort)},
                          {text("unfinished"), double(totals.unfinished)}},
              true);
        return;
    }
    std::printf("frames: %llu, good: %llu, with a wrong CRC: %llu\n", totals.intact + totals.damaged,
                totals.intact, totals.damaged);
    std::printf("bytes: %llu, discarded: %llu (noise before the first delimiter: %llu, too short: %llu, "
                "unfinished: %llu)\n",
                totals.bytes, totals.discarded(), totals.noise, totals.tooShort, totals.unfinished);
}

// Two digits for each byte, with or without "0x", blanks, commas and colons between them, or as hexdump -C
// and xxd print them: an offset in front and the characters behind. False for anything else.
bool fromHex(QByteArray typed, QByteArray &bytes)
{
    static const QRegularExpression dump(
        text("^[0-9a-fA-F]{7,}(?::|  )((?: ?[0-9a-fA-F]{2,4})+).*$|^[0-9a-fA-F]{8}$"),
        QRegularExpression::MultilineOption);
    QString digits = QString::fromLatin1(typed);
    if (digits.contains(
            QRegularExpression(text("^[0-9a-fA-F]{7,}(:|  )"), QRegularExpression::MultilineOption)))
        digits.replace(dump, text("\\1"));
    digits.remove(QRegularExpression(text("0[xX]|[\\s,:;]")));
    typed = digits.toLatin1();
    bytes = QByteArray::fromHex(typed);
    return typed.size() % 2 == 0 && bytes.toHex() == typed.toLower();
}

// Byte by byte, because that takes what a pipe holds without waiting for a full buffer.
void decodeStream(std::FILE *input, CaptureDecoder &decoder)
{
    for (int byte = std::getc(input); byte != EOF; byte = std::getc(input))
        decoder.feed(static_cast<unsigned char>(byte));
}

bool decodeHex(std::FILE *input, CaptureDecoder &decoder)
{
    QFile file;
    QByteArray bytes;
    if (!file.open(input, QIODevice::ReadOnly) || !fromHex(file.readAll(), bytes))
        return false;
    for (const char byte : qAsConst(bytes))
        decoder.feed(static_cast<unsigned char>(byte));
    return true;
}

} // namespace

int runDecode(const CommandLine &line)
{
    const bool asJson = line.has("--json");
    const QString path = line.value("--decode", text("-"));
    const bool isStandardInput = path == text("-");
    const QString name = isStandardInput ? text("Standard input") : path;
    terminal::setBinary(stdin);
    std::FILE *const input = isStandardInput ? stdin : std::fopen(QFile::encodeName(path).constData(), "rb");
    if (input == nullptr)
        return fail(1, text("%1 cannot be read: %2.").arg(name, text(std::strerror(errno))));

    if (!asJson)
        print(text("    offset  length  CRC    payload\n"));
    std::fflush(stdout);
    CaptureDecoder decoder([asJson](const CapturedFrame &frame) { printFrame(frame, asJson); });
    bool isHex = true;
    if (line.has("--hex"))
        isHex = decodeHex(input, decoder);
    else
        decodeStream(input, decoder);
    const int error = std::ferror(input) == 0 ? 0 : errno;
    if (!isStandardInput)
        std::fclose(input);
    if (error != 0)
        return fail(1, text("%1 cannot be read: %2.").arg(name, text(std::strerror(error))));
    if (!isHex)
        return fail(1, text("%1 is not hexadecimal: give two digits for each byte.").arg(name));
    printTotals(decoder.totals(), asJson);
    return decoder.totals().intact > 0 ? 0 : fail(1, text("%1 holds no good frame.").arg(name));
}

int runEncode(const CommandLine &line)
{
    const QByteArray typed = line.value("--encode").toLatin1();
    QByteArray bytes;
    if (!fromHex(typed, bytes))
        return fail(
            2, text("\"%1\" is not hexadecimal: give two digits for each byte.").arg(line.value("--encode")));
    std::vector<unsigned char> message(bytes.begin(), bytes.end());
    std::vector<unsigned char> frame;
    if (!Communication::LogicalLinkControl(255).encode_message(message, frame))
        return fail(2, text("A message has 1 to 255 bytes, not %1.").arg(bytes.size()));
    if (line.has("--json"))
        print(QJsonObject{{text("message"), QString::fromLatin1(bytes.toHex())},
                          {text("frame"), QString::fromLatin1(hex(frame))}});
    else
        print(QString::fromLatin1(hex(frame) + '\n'));
    return 0;
}
