// The platform types: what a standard container would not give by itself.

#include <gtest/gtest.h>

#include <surveymsg/surveymsg.h>

#include <random>
#include <string>
#include <vector>

namespace {

TEST(String, KeepsAnyByteAndItsLength) {
    const CString text("a\0b", 3);
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_TRUE(text == CString("a\0b", 3));
    EXPECT_TRUE(text != "a");
    EXPECT_TRUE(CString("a") < text);
    EXPECT_EQ(CString(static_cast<const char*>(nullptr)), "");
    EXPECT_EQ((text + "c").GetLength(), 4);
    EXPECT_EQ("x" + CString("y"), "xy");
    EXPECT_EQ(text.Mid(1), CString("\0b", 2));
    EXPECT_EQ(CString("abc").Mid(1, 99), "bc");
    EXPECT_EQ(CString("abc").Mid(-1, 2), "ab");
    EXPECT_EQ(CString("abc").Left(-1), "");
    EXPECT_EQ(CString("abcabc").Find("ca"), 2);
    EXPECT_EQ(CString("abc").Find("x"), -1);
}

// Lengths around the inline storage and the large reserve, against std::string.
TEST(String, GrowsAndShrinksLikeAStandardString) {
    std::mt19937 random(7);
    CString text;
    std::string expected;
    for (int step = 0; step < 20000; ++step) {
        const std::size_t length = random() % (step % 50 == 0 ? 50000 : 70);
        const std::string piece(length, static_cast<char>('a' + step % 26));
        switch (random() % 6) {
            case 0:
                text = piece.c_str();
                expected = piece;
                break;
            case 1:
                text += piece.c_str();
                expected += piece;
                break;
            case 2: {  // from within itself
                const std::size_t from = expected.empty() ? 0 : random() % expected.size();
                const std::string part = expected.substr(from);
                text.Assign(static_cast<const char*>(text) + from, static_cast<int>(part.size()));
                expected = part;
                break;
            }
            case 3: {
                char* storage = text.GetBuffer(static_cast<int>(length));
                ASSERT_EQ(std::string(storage, expected.size()), expected);
                piece.copy(storage, piece.size());
                text.ReleaseBuffer(static_cast<int>(length));
                expected = piece;
                break;
            }
            case 4: {
                CString moved(std::move(text));
                text = moved;
                break;
            }
            default:
                text += text;
                expected += expected;
                if (expected.size() > 100000) {
                    text.Empty();
                    expected.clear();
                }
        }
        ASSERT_EQ(std::string(text.View()), expected);
        ASSERT_EQ(static_cast<const char*>(text)[expected.size()], '\0');
    }
}

TEST(String, ReleaseFindsTheTerminatorOrTheEndOfTheStorage) {
    CString text;
    std::strcpy(text.GetBuffer(100), "hello");
    text.ReleaseBuffer();
    EXPECT_EQ(text, "hello");
    text.ReleaseBuffer(1 << 30);
    EXPECT_GE(text.GetLength(), 100);
}

struct Thing : CObject {};

TEST(Map, KeepsTheOrderOfFirstInsertion) {
    CMapStringToOb map;
    std::vector<std::string> expected;
    Thing things[1000];
    for (int i = 0; i < 1000; ++i) {
        const std::string key = "key " + std::to_string(i * 7919 % 1000);
        map[key.c_str()] = &things[i];
        expected.push_back(key);
    }
    for (int i = 0; i < 1000; i += 3) {
        EXPECT_EQ(map.RemoveKey(expected[static_cast<std::size_t>(i)].c_str()), 1);
        EXPECT_EQ(map.RemoveKey(expected[static_cast<std::size_t>(i)].c_str()), 0);
    }
    std::vector<std::string> left;
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (i % 3 != 0) left.push_back(expected[i]);
    map[expected[0].c_str()] = &things[0];  // added again: last
    map[left[0].c_str()] = &things[1];      // set again: where it was
    left.push_back(expected[0]);
    std::size_t place = 0;
    CString key;
    CObject* value = nullptr;
    for (POSITION position = map.GetStartPosition(); position;) {
        map.GetNextAssoc(position, key, value);
        ASSERT_EQ(std::string(key.View()), left[place]);
        CObject* found = nullptr;
        EXPECT_EQ(map.Lookup(key, found), 1);
        EXPECT_EQ(found, value);
        EXPECT_EQ(map.GetAt(static_cast<int>(place)), value);
        ++place;
    }
    EXPECT_EQ(place, left.size());
    EXPECT_EQ(map.Lookup("none", value), 0);
    map.RemoveAll();
    EXPECT_EQ(map.GetStartPosition(), nullptr);
    EXPECT_EQ(map.Lookup(left[0].c_str(), value), 0);
}

// Keys as a sender would choose them who knows how a small map tells keys apart. Without the process's own hash
// this would not end.
TEST(Map, TakesAMillionKeysThatDifferInTheMiddleOnly) {
    CMapStringToOb map;
    Thing thing;
    const auto key = [](int i) { return CString(("beginning" + std::to_string(1000000 + i) + "the end").c_str()); };
    for (int i = 0; i < 1000000; ++i) map[key(i)] = &thing;
    EXPECT_EQ(map.GetCount(), 1000000);
    CObject* found = nullptr;
    for (int i = 0; i < 1000000; i += 7) EXPECT_EQ(map.Lookup(key(i), found), 1);
    EXPECT_EQ(map.Lookup(key(-1), found), 0);
}

TEST(Arrays, GrowWithNulls) {
    CPtrArray pointers;
    int value = 0;
    pointers.SetAtGrow(3, &value);
    EXPECT_EQ(pointers.GetSize(), 4);
    EXPECT_EQ(pointers[0], nullptr);
    EXPECT_EQ(pointers.GetAt(3), &value);
    EXPECT_EQ(pointers.GetAt(4), nullptr);
    EXPECT_EQ(pointers.GetAt(-1), nullptr);
    pointers.SetAtGrow(-1, &value);
    pointers.SetSize(1);
    EXPECT_EQ(pointers.Add(&value), 1);
    CStringArray texts;
    EXPECT_EQ(texts.Add("a"), 0);
    EXPECT_EQ(texts[0], "a");
}

}  // namespace
