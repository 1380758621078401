// Stands in for the fuzzer where there is none, for some seconds of every day: gives a target each input of its corpus,
// and some thousand inputs that are made of them.
#include "tests/fuzz/fuzz.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

namespace
{

using Input = std::vector<std::uint8_t>;

void run(const Input& input)
{
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

/// Another input made of known ones.
Input changed(const std::vector<Input>& known, std::mt19937& random)
{
    const auto below = [&random](std::size_t count) { return count == 0 ? 0 : random() % count; };
    Input input = known[below(known.size())];
    for (std::size_t i = 0, times = 1 + below(4); i < times; ++i) {
        const auto at = static_cast<std::ptrdiff_t>(below(input.size() + 1));
        const auto length = static_cast<std::ptrdiff_t>(
            below(std::min<std::size_t>(input.size() - static_cast<std::size_t>(at), 8) + 1));
        switch (below(5)) {
        case 0:
            input.insert(input.begin() + at, static_cast<std::uint8_t>(random()));
            break;
        case 1:
            input.erase(input.begin() + at, input.begin() + at + length);
            break;
        case 2:
            if (!input.empty())
                input[below(input.size())] = static_cast<std::uint8_t>(random());
            break;
        case 3: {
            const Input piece(input.begin() + at, input.begin() + at + length);
            input.insert(input.begin() + static_cast<std::ptrdiff_t>(below(input.size() + 1)), piece.begin(),
                         piece.end());
            break;
        }
        default: {
            const Input& other = known[below(known.size())];
            const auto from = static_cast<std::ptrdiff_t>(below(other.size() + 1));
            input.insert(input.begin() + at, other.begin() + from, other.end());
            break;
        }
        }
    }
    return input;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    std::vector<Input> known;
    const QDir corpus(QString::fromLocal8Bit(argv[1]));
    for (const QString& name : corpus.entryList(QDir::Files, QDir::Name)) {
        QFile file(corpus.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            return 2;
        const QByteArray bytes = file.readAll();
        known.emplace_back(bytes.begin(), bytes.end());
        run(known.back());
    }
    if (known.empty())
        return 2; // a wrong folder
    const bool given = qEnvironmentVariableIsSet("QUILLON_SEED");
    const auto seed =
        given ? static_cast<unsigned>(qgetenv("QUILLON_SEED").toUInt()) : std::random_device()();
    const int runs = qEnvironmentVariableIsSet("QUILLON_FUZZ_RUNS")
                         ? qEnvironmentVariableIntValue("QUILLON_FUZZ_RUNS")
                         : QUILLON_FUZZ_RUNS;
    std::printf("seed %u; QUILLON_SEED=%u repeats this run\n", seed, seed);
    std::fflush(stdout);
    std::mt19937 random(seed);
    for (int i = 0; i < runs; ++i)
        run(changed(known, random));
    std::printf("%zu inputs of the corpus, %d made of them\n", known.size(), runs);
    return 0;
}
