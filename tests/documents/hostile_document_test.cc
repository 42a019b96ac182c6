// Documents that are made to do harm: large, deep, and spoilt.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "documents/document.h"
#include "tests/agent/state/scratch_directory.h"

namespace documents {
namespace {

std::string repeated(const std::string& piece, size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  while (count-- > 0) text += piece;
  return text;
}

TEST(HostileDocument, OfTooManyBytesIsNotRead) {
  constexpr size_t LARGEST = 16 * 1024 * 1024;
  const Document document = read(std::string(LARGEST + 1, '{'));
  ASSERT_EQ(document.mistakes.size(), 1U);
  EXPECT_EQ(document.mistakes[0].text, "the document is larger than 16 MiB");
  EXPECT_EQ(read(std::string(LARGEST, ' ')).mistakes.at(0).text, "the document is empty");
}

TEST(HostileDocument, OfManyMistakesTellsTheFirst) {
  const Document document = read(repeated("x\n", 100'000));
  EXPECT_EQ(document.mistakeCount, 100'000U);
  EXPECT_EQ(document.mistakes.size(), 100U);
}

TEST(HostileDocument, MayNestAsDeepAsItLikes) {
  for (const std::string head : {"{\"A\":", "{\"A\":{\"B\":", "{\"USERS\":{\"b\":{\"C\":"}) {
    EXPECT_EQ(read(head + repeated("[", 20'000)).mistakeCount, 2U);
    EXPECT_GE(read(head + repeated("{\"A\":", 20'000)).mistakeCount, 1U);
  }
  EXPECT_EQ(read("{\"A\":{\"B\":" + repeated("[", 9999) + repeated("]", 9999) + "}}").mistakeCount,
            1U);
  EXPECT_GE(read(repeated("/ROOT=\n", 20'000)).mistakeCount, 1U);
}

/// Nothing may crash, hang, or be read outside of the text; the sanitizers look on.
TEST(HostileDocument, MayBeSpoiltAnywhere) {
  const std::string wholes[] = {
      agent_testing::exampleSettings(),
      "{\"IKE\": {\"IKE_PORT\": 501, \"QCD_SECRET\": null, \"CRL_PROCESSING\": \"\\u00e4\"},\n"
      " \"USERS\": {\"bob\": {\"PMP_TIMEOUT\": 2.0e1, \"NAME\": true}, \"eve\": {}}}",
      "# c\nIKE.IKE_PORT=1\nUSERS[bob].NAME=x\nUSERS[a].b=c].LSP_FILE=y\n"};
  const std::string bytes("{}[]\",:=/\n \\0e.-tn#\x7f\xff\0", 23);
  std::mt19937 random(1);  // NOLINT: the same texts in each run
  for (const std::string& whole : wholes) {
    for (int i = 0; i < 100; ++i) {
      std::string text = whole;
      for (auto changes = random() % 4 + 1; changes > 0; --changes) {
        const size_t at = random() % text.size();
        if (random() % 3 == 0) text.erase(at, random() % 20);
        if (text.empty()) break;
        text[at % text.size()] = bytes[random() % bytes.size()];
      }
      const Document document = read(text);
      EXPECT_LE(document.mistakes.size(), document.mistakeCount);
      for (const Value& value : document.values) EXPECT_FALSE(value.name.empty()) << text;
    }
  }
}

}  // namespace
}  // namespace documents
