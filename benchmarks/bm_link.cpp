// The device link beside the same algorithms one byte at a time, memcpy and a table-driven checksum. Times
// are per message. After the table come the ratios; see RatioReporter.h.
//
// The benchmarks "noise" read bytes without a delimiter: the time per byte must not depend on their number.

#include <communication/CrcCCITT.h>
#include <communication/LogicalLinkControl.h>

#include "AllocationCount.h"
#include "LinkData.h"
#include "PlainLink.h"
#include "RatioReporter.h"

#include <boost/crc.hpp>

#include <cstring>

namespace {

using Communication::CrcCCITT;
using Communication::LogicalLinkControl;
using namespace LinkData;

// ---- the implementations under one set of names ----

struct Own {
    static constexpr char name[] = "own";
    using Link = LogicalLinkControl;

    static unsigned int crc(Bytes &data) { return CrcCCITT::calcCrc(data.data(), data.size()); }
    static void encode(const Bytes &in, Bytes &out) { LogicalLinkControl::cobs_encode(in, out); }
    static void decode(const Bytes &in, Bytes &out) { LogicalLinkControl::cobs_decode(in, out); }
    static void frame(Link &link, Bytes &message, Bytes &frame) { link.encode_message(message, frame); }
};

struct Plain {
    static constexpr char name[] = "plain";
    using Link = PlainLink::Link;

    static unsigned int crc(Bytes &data) { return PlainLink::calcCrc(data.data(), data.size()); }
    static void encode(const Bytes &in, Bytes &out) { PlainLink::cobsEncode(in, out); }
    static void decode(const Bytes &in, Bytes &out) { PlainLink::cobsDecode(in, out); }
    static void frame(Link &link, Bytes &message, Bytes &frame) { link.encode_message(message, frame); }
};

struct Boost {
    static constexpr char name[] = "boost";

    static unsigned int crc(Bytes &data)
    {
        boost::crc_ccitt_false_t crc;
        crc.process_bytes(data.data(), data.size());
        return crc.checksum();
    }
};

struct Memcpy {
    static constexpr char name[] = "memcpy";

    static void copy(const Bytes &in, Bytes &out)
    {
        const std::size_t start = out.size();
        out.resize(start + in.size());
        std::memcpy(out.data() + start, in.data(), in.size());
    }
};

// ---- data ----

struct Mix {
    const char *name;
    std::size_t zeroInterval; // one of so many bytes is zero on average
};

constexpr Mix mixes[] = {
    {"random", 256}, {"zero-free", 1U << 31}, {"all-zero", 1}, {"sparse", 16}, {"dense", 2}};
const Mix &randomMix = mixes[0];

// So many different messages that no processor learns them by heart, and so few that they stay in its cache.
std::vector<Bytes> messages(const Mix &mix, std::size_t size)
{
    std::mt19937 generator(1);
    std::vector<Bytes> result;
    for (std::size_t total = 0; total < 0x8000; total += size)
        result.push_back(bytes(generator, mix.zeroInterval, size));
    return result;
}

// A reused vector that lies inside one memory page: crossing a page costs a copy several times its own time.
Bytes reusedVector()
{
    std::vector<Bytes> tries;
    do {
        tries.emplace_back().reserve(5000);
    } while (reinterpret_cast<std::uintptr_t>(tries.back().data()) % 4096 > 2048);
    return std::move(tries.back());
}

// Runs `work` on the messages in turn.
template <typename Work> void measure(benchmark::State &state, std::vector<Bytes> inputs, Work work)
{
    Bytes out = reusedVector();
    std::size_t next = 0;
    const long allocations = allocationCount;
    for (auto _ : state) {
        work(inputs[next], out);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
        next = next + 1 < inputs.size() ? next + 1 : 0;
    }
    state.counters["allocations"] =
        benchmark::Counter(double(allocationCount - allocations), benchmark::Counter::kAvgIterations);
}

// ---- the functions ----

template <typename Implementation> void calcCrc(benchmark::State &state, const Mix &mix, std::size_t size)
{
    measure(state, messages(mix, size),
            [](Bytes &in, Bytes &) { benchmark::DoNotOptimize(Implementation::crc(in)); });
}

template <typename Implementation> void cobs_encode(benchmark::State &state, const Mix &mix, std::size_t size)
{
    measure(state, messages(mix, size), [](Bytes &in, Bytes &out) {
        out.assign(1, 0);
        Implementation::encode(in, out);
    });
}

template <typename Implementation> void cobs_decode(benchmark::State &state, const Mix &mix, std::size_t size)
{
    std::vector<Bytes> inputs = messages(mix, size);
    for (Bytes &input : inputs) {
        Bytes stuffed{0};
        PlainLink::cobsEncode(input, stuffed);
        input.assign(stuffed.begin() + 1, stuffed.end());
    }
    measure(state, std::move(inputs), [](Bytes &in, Bytes &out) {
        out.clear();
        Implementation::decode(in, out);
    });
}

void copy(benchmark::State &state, const Mix &mix, std::size_t size)
{
    measure(state, messages(mix, size), [](Bytes &in, Bytes &out) {
        out.clear();
        Memcpy::copy(in, out);
    });
}

template <typename Implementation>
void encode_message(benchmark::State &state, const Mix &mix, std::size_t size)
{
    typename Implementation::Link link(255);
    std::vector<Bytes> inputs = messages(mix, size);
    for (Bytes &input : inputs)
        input.reserve(size + 2);
    measure(state, std::move(inputs), [&link, size](Bytes &in, Bytes &out) {
        in.resize(size);
        Implementation::frame(link, in, out);
    });
}

// A stream of back-to-back frames that arrives in chunks; the time is that of one frame.
template <typename Implementation>
void receive(benchmark::State &state, const Mix &mix, std::size_t size, std::size_t chunkSize)
{
    Bytes stream;
    Bytes frame;
    PlainLink::Link sender(255);
    std::vector<Bytes> sent = messages(mix, size);
    for (Bytes &message : sent) {
        sender.encode_message(message, frame);
        stream = std::move(stream) + frame;
    }

    typename Implementation::Link link(255);
    Bytes message = reusedVector();
    Bytes chunk = reusedVector();
    chunk.resize(1);
    std::size_t received = 0;
    const long allocations = allocationCount;
    while (state.KeepRunningBatch(std::int64_t(sent.size()))) {
        for (auto from = stream.begin(); from != stream.end(); from += std::ptrdiff_t(chunk.size())) {
            if (chunkSize == 1)
                chunk[0] = *from;
            else
                chunk.assign(from, from + std::min(stream.end() - from, std::ptrdiff_t(chunkSize)));
            unsigned int position = 0;
            while (link.receive(chunk, position, message) == LogicalLinkControl::MESSAGE_RECEIVED) {
                benchmark::DoNotOptimize(message.data());
                benchmark::ClobberMemory();
                ++received;
            }
        }
    }
    if (received != std::size_t(state.iterations()))
        state.SkipWithError("messages were lost");
    state.counters["allocations"] =
        benchmark::Counter(double(allocationCount - allocations), benchmark::Counter::kAvgIterations);
}

void noise(benchmark::State &state, bool inFrame, std::size_t size, std::size_t chunkSize)
{
    for (auto _ : state) {
        LogicalLinkControl link(255);
        Bytes message;
        Bytes chunk(chunkSize, 0x55);
        unsigned int position = 0;
        if (inFrame) {
            Bytes delimiter{0};
            link.receive(delimiter, position, message);
        }
        for (std::size_t sent = 0; sent < size; sent += chunkSize) {
            position = 0;
            benchmark::DoNotOptimize(link.receive(chunk, position, message));
        }
    }
    state.SetBytesProcessed(std::int64_t(size) * state.iterations());
}

// ---- registration ----

std::string caseName(const Mix &mix, std::size_t size)
{
    return std::string(mix.name) + '/' + std::to_string(size);
}

using Function = void (*)(benchmark::State &, const Mix &, std::size_t);

void add(const char *function, const char *implementation, Function run, const Mix &mix, std::size_t size)
{
    const std::string name = std::string(function) + '/' + implementation + '/' + caseName(mix, size);
    benchmark::RegisterBenchmark(name.c_str(), run, mix, size);
}

template <typename Implementation> void addCodec(const Mix &mix, std::size_t size)
{
    const char *name = Implementation::name;
    add("calcCrc", name, calcCrc<Implementation>, mix, size);
    add("cobs_encode", name, cobs_encode<Implementation>, mix, size);
    add("cobs_decode", name, cobs_decode<Implementation>, mix, size);
    add("encode_message", name, encode_message<Implementation>, mix, size);
    for (const std::size_t chunk : {1U, 64U, 4096U}) {
        const std::string full = std::string("receive/") + name + '/' + caseName(mix, size) + "/chunks of "
            + std::to_string(chunk);
        benchmark::RegisterBenchmark(full.c_str(), receive<Implementation>, mix, size, chunk);
    }
}

void addNoise()
{
    for (const bool inFrame : {false, true}) {
        for (const std::size_t chunk : {1U, 4096U}) {
            for (const std::size_t mebibytes : {64U, 256U, 1024U}) {
                const std::string name = std::string("noise ") + (inFrame ? "in a frame" : "before a frame")
                    + ", chunks of " + std::to_string(chunk) + ", MiB: " + std::to_string(mebibytes);
                benchmark::RegisterBenchmark(name.c_str(), noise, inFrame, mebibytes << 20, chunk)
                    ->Unit(benchmark::kMillisecond)
                    ->Iterations(1);
            }
        }
    }
}

// The framing functions spend most of their time in the checksum: the ratio of what is left without it.
void printWithoutCrc(const RatioReporter &reporter, const std::string &function, const std::string &message,
                     const std::string &chunks = std::string())
{
    const auto rest = [&](const char *implementation) {
        return reporter.fastest(function, implementation, message + chunks)
            - reporter.fastest("calcCrc", implementation, message);
    };
    if (reporter.fastest(function, Own::name, message + chunks) > 0 && rest(Plain::name) > 0)
        std::printf("%6.3f  %s/%s%s without calcCrc  of plain\n", rest(Own::name) / rest(Plain::name),
                    function.c_str(), message.c_str(), chunks.c_str());
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    for (const std::size_t size : {16U, 64U, 255U}) {
        for (const Mix &mix : mixes) {
            addCodec<Own>(mix, size);
            addCodec<Plain>(mix, size);
        }
        add("calcCrc", Boost::name, calcCrc<Boost>, randomMix, size);
        add("copy", Memcpy::name, copy, randomMix, size);
    }
    addNoise();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const Mix &mix : mixes) {
        printWithoutCrc(reporter, "encode_message", caseName(mix, 255));
        printWithoutCrc(reporter, "receive", caseName(mix, 255), "/chunks of 4096");
    }
    return 0;
}
