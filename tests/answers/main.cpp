// orl-answers: what this build of the matcher answers to the pairs of record_pairs.h.
//
//   orl-answers list             one line a pair, for every pair, real ones included where
//                                ORL_RECORDS names a folder of records
//   orl-answers digest           the lines of tests/golden/answers.jsonl
//   orl-answers compare [--exact] A B
//                                holds two lists against each other: exit status 1 when they
//                                differ;
//                                --exact allows no difference of fractions

#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "tests/answers/answer_comparison.h"
#include "tests/answers/answer_digest.h"
#include "tests/answers/record_pairs.h"
#include "tools/command_line/standard_streams.h"

namespace orl::test {
namespace {

constexpr int kSame = 0;
constexpr int kDifferent = 1;
constexpr int kUnusable = 2;

void ListAnswers(const RecordPairs& set) {
    ForEachAnswer(set, [](const Answer& answer) { std::cout << LineOf(answer) << '\n'; });
}

int List() {
    ListAnswers(GeneratedPairs());
    ListAnswers(HostilePairs());
    for (const RecordPairs& set : RealPairs()) {
        ListAnswers(set);
    }
    return kSame;
}

int Digest() {
    for (const RecordPairs& set : {GeneratedPairs(), HostilePairs()}) {
        for (const std::string& line : DigestLines(set)) {
            std::cout << line << '\n';
        }
    }
    return kSame;
}

int Compare(const std::string& firstName, const std::string& secondName, bool exact) {
    std::ifstream first(firstName, std::ios::binary);
    std::ifstream second(secondName, std::ios::binary);
    const AnswerComparison comparison = CompareAnswers(first, second);
    std::cout << comparison.digest.Answers() << " pairs, " << comparison.digest.Matched()
              << " matched, whole figures " << comparison.digest.WholeDigest() << ", "
              << comparison.wholeDifferences << " answers differ; " << comparison.fractionsUnequal
              << " fractions differ, by " << comparison.greatestDifference
              << " of their size at most, " << comparison.ties << " ties decided otherwise\n"
              << comparison.firstDifference;
    const bool same = exact ? comparison.SameBits() : comparison.Same();
    return same ? kSame : kDifferent;
}

int Run(const std::vector<std::string>& arguments) {
    if (arguments == std::vector<std::string>{"list"}) {
        return List();
    }
    if (arguments == std::vector<std::string>{"digest"}) {
        return Digest();
    }
    if (arguments.size() == 3 && arguments[0] == "compare") {
        return Compare(arguments[1], arguments[2], false);
    }
    if (arguments.size() == 4 && arguments[0] == "compare" && arguments[1] == "--exact") {
        return Compare(arguments[2], arguments[3], true);
    }
    std::cerr << "usage: orl-answers list | digest | compare [--exact] FIRST SECOND\n";
    return kUnusable;
}

}  // namespace
}  // namespace orl::test

int main(int argc, char** argv) {
    try {
        orl::tools::prepareStandardStreams();
        const int end = orl::test::Run(orl::tools::argumentsAsUtf8(argc, argv));
        return std::cout.flush() ? end : orl::test::kUnusable;
    } catch (const std::exception& error) {
        std::cerr << "orl-answers: " << error.what() << '\n';
        return orl::test::kUnusable;
    }
}
