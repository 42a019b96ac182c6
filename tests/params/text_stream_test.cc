// A text in memory is the one that any other stream would get.
#include "lparams/params/text_stream.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "lparams/params/text_writer.h"

namespace LPARAMS::Server {
namespace {

constexpr size_t MAX_LENGTH = 70;

std::string textOfLength(size_t length) {
  std::string text;
  while (text.size() < length) text += static_cast<char>('!' + text.size());
  return text;
}

/// Lines of every length that is copied in a way of its own, at every depth and beyond the
/// catalogue's.
template <typename Stream>
void putLines(Stream& os) {
  for (int indent = -1; indent <= 6; ++indent) {
    for (size_t length = 0; length <= MAX_LENGTH; ++length) {
      const std::string value = textOfLength(length);
      putLine(os, indent, value, "=", value);
    }
    putLine(os, indent, "NUMBER", "=", textOf(std::numeric_limits<int>::min()));
  }
}

std::string expectedLines() {
  std::ostringstream os;
  for (int indent = -1; indent <= 6; ++indent) {
    const std::string blanks(indent > 0 ? static_cast<size_t>(indent) * 4 : 0, ' ');
    for (size_t length = 0; length <= MAX_LENGTH; ++length) {
      const std::string value = textOfLength(length);
      os << blanks << value << "=" << value << "\n";
    }
    os << blanks << "NUMBER=-2147483648\n";
  }
  return os.str();
}

TEST(TextStream, GetsWhatAnyStreamGetsWhateverSizeIsExpected) {
  const std::string expected = expectedLines();
  std::ostringstream other;
  putLines(other);
  EXPECT_EQ(other.str(), expected);
  const size_t size = expected.size();
  for (const size_t guess : {size_t{0}, size_t{1}, size_t{63}, size / 2, size - 1, size, size + 1,
                             size + 20, 10 * size}) {
    TextStream os(guess);
    putLines(os);
    EXPECT_TRUE(os.good());
    EXPECT_EQ(os.take(), expected) << guess;
  }
}

TEST(TextStream, TakesWhatComesPastTheLinesInItsPlace) {
  TextStream os(0);
  os << 1234567 << ' ';
  putLine(os, 1, "LINE");
  os.put('x');
  os.write("yz", 2).flush();
  putLine(os, 0, "END");
  EXPECT_EQ(os.take(), "1234567     LINE\nxyzEND\n");
}

TEST(TextStream, GivesBackMemoryThatIsFarTooLarge) {
  TextStream os(100'000);
  putLine(os, 0, "a line of more than what a string holds in place");
  const std::string text = os.take();
  EXPECT_EQ(text, "a line of more than what a string holds in place\n");
  EXPECT_LT(text.capacity(), 1000u);
}

TEST(TextStream, ThrowsWhatMakesItFail) {
  TextStream os(0);
  EXPECT_THROW(os.setstate(std::ios::badbit), std::ios::failure);
  EXPECT_THROW(os.setstate(std::ios::failbit), std::ios::failure);
}

TEST(TextStream, HasRoomForALineThatIsLongerThanAllBefore) {
  TextStream os(10);
  const std::string value(1'000'000, 'v');
  putLine(os, 3, "NAME", "=", value);
  putLine(os, 0, "end");
  EXPECT_EQ(os.take(), "            NAME=" + value + "\nend\n");
}

TEST(TextStream, IsKnownAndOtherStreamsAreNot) {
  TextStream os(0);
  EXPECT_EQ(TextStream::of(os), &os);
  std::ostringstream other;
  EXPECT_EQ(TextStream::of(other), nullptr);
  std::ostream none(nullptr);
  EXPECT_EQ(TextStream::of(none), nullptr);
}

}  // namespace
}  // namespace LPARAMS::Server
