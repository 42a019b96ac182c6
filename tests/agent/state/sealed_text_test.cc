#include "agent/state/sealed_text.h"

#include <gtest/gtest.h>

namespace agent {
namespace {

TEST(SealedText, IsTheTextAndOneMoreLine) {
  const std::string seal = "#xxh3-128=";
  const std::string file = sealed("/ROOT=\nend=\n");
  EXPECT_EQ(file.substr(0, 12 + seal.size()), "/ROOT=\nend=\n" + seal);
  EXPECT_EQ(file.size(), 12 + seal.size() + 32 + 1);
  EXPECT_EQ(file.back(), '\n');
}

// Files outlive versions: the checksum of a text must not change.
TEST(SealedText, TheChecksumIsTheKnownOne) {
  EXPECT_EQ(sealed(""), "#xxh3-128=99aa06d3014798d86001c324468d497f\n");
}

TEST(SealedText, GivesBackWhatWasSealed) {
  for (const std::string& text : {std::string(), std::string("a\n"),
                                  std::string(100'000, 'x') + "\n", sealed("sealed twice\n")}) {
    const SealedText back = unsealed(sealed(text));
    EXPECT_EQ(back.seal, SealedText::Intact);
    EXPECT_EQ(back.text, text);
  }
}

TEST(SealedText, EveryFlippedBitIsSeen) {
  const std::string file = sealed("/ROOT=\n    /IKE=\n        IKE_PORT=500\n    end=\nend=\n");
  for (size_t byte = 0; byte < file.size(); ++byte) {
    for (int bit = 0; bit < 8; ++bit) {
      std::string damaged = file;
      damaged[byte] = static_cast<char>(damaged[byte] ^ (1 << bit));
      EXPECT_NE(unsealed(damaged).seal, SealedText::Intact) << byte << "." << bit;
    }
  }
}

TEST(SealedText, WhatWasNeverSealedOrIsCutOffHasNoSeal) {
  const std::string file = sealed("text\n");
  EXPECT_EQ(unsealed("text\n").seal, SealedText::Missing);
  EXPECT_EQ(unsealed("").seal, SealedText::Missing);
  EXPECT_EQ(unsealed("a value with #xxh3-128=\n").seal, SealedText::Missing);
  for (size_t size = 0; size < file.size(); ++size) {
    EXPECT_NE(unsealed(file.substr(0, size)).seal, SealedText::Intact) << size;
  }
}

}  // namespace
}  // namespace agent
