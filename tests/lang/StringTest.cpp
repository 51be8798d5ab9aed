#include <qv/core/Exception.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>

#include <QvTextPrinting.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace qv;

namespace {

// The hash as the text defines it, step by step, for comparison.
uint32_t referenceHash(const std::u16string& s)
{
    int32_t n = static_cast<int32_t>(s.size());
    int32_t step = ((n - 32) / 32) + 1;
    uint32_t h = 0;
    for (int32_t i = 0; i < n; i += step)
        h = h * 37u + s[static_cast<size_t>(i)];
    return h;
}

std::u16string text(const String& s)
{
    return s.toU16String();
}

} // namespace

TEST(StringBasics, EmptyStringsShareOneTerminatedBuffer)
{
    String a;
    String b(u"", 0, 0);
    String c(static_cast<const char16_t*>(nullptr));
    EXPECT_EQ(a.getLength(), 0);
    EXPECT_EQ(a.getData()[0], 0);
    EXPECT_EQ(a.hashCode(), 0u);
    EXPECT_EQ(a.getData(), b.getData());
    EXPECT_EQ(a.getData(), c.getData());
    String reserved(40);
    EXPECT_EQ(reserved.getLength(), 0);
    EXPECT_NE(reserved.getData(), a.getData()) << "a capacity gets a buffer of its own";
}

TEST(StringBasics, ConstructorsTakeTextAsTheirModeSays)
{
    EXPECT_EQ(text(String(u"hello world", 5)), u"hello");
    EXPECT_EQ(text(String(u'z', 3)), u"zzz");
    EXPECT_EQ(text(String(u"abc")), u"abc");
    const unsigned short wide[] = {'w', 'i', 0};
    EXPECT_EQ(text(String(wide)), u"wi");
    EXPECT_EQ(text(String(String::ACQUIRE_COPY_UPPER, u"mixed Case")), u"MIXED CASE");
    EXPECT_EQ(text(String(static_cast<String::AcquireMode>(7), u"odd")), u"odd");

    String source(u"0123456789");
    EXPECT_EQ(text(String(String::ACQUIRE_COPY, source, 2, 5)), u"234");
    EXPECT_EQ(text(String(String::ACQUIRE_COPY, source, 8, 99)), u"89");
    EXPECT_EQ(text(String(String::ACQUIRE_COPY, source, 7, 3)), u"");
    EXPECT_EQ(String(String::ACQUIRE_COPY, source, 7, 3).getData(), String().getData());
    String shared(String::ACQUIRE_SHARE, source);
    EXPECT_EQ(shared.getData(), source.getData());
    String part(String::ACQUIRE_SHARE, source, 1, 3);
    EXPECT_EQ(text(part), u"12");
    EXPECT_NE(part.getData(), source.getData() + 1) << "a part cannot share the buffer";
    String wrapped(String::ACQUIRE_WRAP, source, 4, 6);
    EXPECT_EQ(wrapped.getData(), source.getData() + 4);
    EXPECT_EQ(wrapped.getLength(), 2);

    EXPECT_EQ(text(String(L"a\u00e9\U0001F600")), u"a\u00e9\U0001F600");
    EXPECT_EQ(String(L"\U0001F600").getLength(), 2);
    const wchar_t invalid[] = {0x110000, 0xD800, 'x', 0};
    EXPECT_EQ(text(String(invalid)), u"\uFFFD\uFFFDx");
    EXPECT_EQ(text(String(std::u16string(u"std"))), u"std");
    EXPECT_EQ(text(String::CQVString(u"made", 2)), u"ma");
    EXPECT_EQ(text(String::CQVString(String::ACQUIRE_COPY_UPPER, source, 0, 2)), u"01");
    EXPECT_THROW(String(static_cast<const char16_t*>(nullptr), 3), ResultException);

    // A null pointer literal is taken as wide text, never as ambiguous.
    EXPECT_THROW(String(nullptr, 3), ResultException);
    String fromNull(nullptr);
    EXPECT_EQ(fromNull.getLength(), 0);
    EXPECT_EQ(text(fromNull.append(u"ab").append(nullptr).insert(1, nullptr)), u"ab");
    fromNull = nullptr;
    EXPECT_EQ(fromNull.getLength(), 0);
}

TEST(StringBasics, BufferConstructorsCopyShareOrWrap)
{
    Reference<util::RWCharBuffer> buffer = makeReference<util::RWCharBuffer>(u"text\0", 5);
    String copied(buffer.get());
    EXPECT_EQ(copied.getLength(), 5) << "a copy takes every unit of the buffer";
    String shared(String::ACQUIRE_SHARE, buffer.get());
    EXPECT_EQ(text(shared), u"text") << "a shared buffer counts the NUL";
    EXPECT_EQ(shared.getData(), buffer->GetData());
    EXPECT_EQ(buffer->GetRefCount(), 2);
    shared.append(u'!');
    EXPECT_EQ(std::u16string(buffer->GetData(), 4), u"text") << "the shared buffer is copied before writing";
    EXPECT_EQ(buffer->GetRefCount(), 1);
    String wrapped(String::ACQUIRE_WRAP, buffer.get());
    EXPECT_EQ(wrapped.getData(), buffer->GetData());
    EXPECT_EQ(text(String(String::ACQUIRE_COPY_UPPER, buffer.get())), std::u16string(u"TEXT\0", 5));
    EXPECT_EQ(String(static_cast<util::ICharBuffer*>(nullptr)).getLength(), 0);
}

TEST(StringCopyOnWrite, CopiesShareUntilOneWrites)
{
    String a(u"shared text");
    String b(a);
    EXPECT_EQ(a.getData(), b.getData());
    b.append(u" more");
    EXPECT_EQ(text(a), u"shared text");
    EXPECT_EQ(text(b), u"shared text more");
    EXPECT_NE(a.getData(), b.getData());

    String c(a);
    c.setCharAt(0, u'S');
    EXPECT_EQ(text(a), u"shared text");
    EXPECT_EQ(text(c), u"Shared text");
    String middle(a);
    middle.replace(2, 4, u"ORE", -1, 0).insert(0, u'>', 2);
    EXPECT_EQ(text(middle), u">>shORE text");
    EXPECT_EQ(text(a), u"shared text");

    // Once the other holder is gone the writer is sole again and writes in place.
    const char16_t* before = nullptr;
    {
        String d(a);
        before = a.getData();
    }
    a.setCharAt(1, u'H');
    EXPECT_EQ(a.getData(), before);

    String e;
    e.setAddRef(a);
    EXPECT_EQ(e.getData(), a.getData());
    String moved(std::move(e));
    EXPECT_EQ(moved.getData(), a.getData());
    EXPECT_EQ(e.getLength(), 0);
    moved.toUpper();
    EXPECT_EQ(text(a), u"sHared text");
    EXPECT_EQ(text(moved), u"SHARED TEXT");
    Reference<Object> clone(a.toString().clone());
    EXPECT_TRUE(clone->equals(a));
}

TEST(StringCopyOnWrite, AssignmentCopiesInsteadOfSharing)
{
    String a(u"alpha");
    String b(u"a longer beta text");
    const char16_t* bBuffer = b.getData();
    b = a;
    EXPECT_EQ(text(b), u"alpha");
    EXPECT_NE(b.getData(), a.getData());
    EXPECT_EQ(b.getData(), bBuffer) << "the target keeps its own buffer";
    b.append(u'!');
    EXPECT_EQ(text(a), u"alpha");
    b = b;
    EXPECT_EQ(text(b), u"alpha!");
    b.setTo(u'x', 3);
    EXPECT_EQ(text(b), u"xxx");
}

TEST(StringCopyOnWrite, WrappedMemoryIsNeverWritten)
{
    static const char16_t caller[] = u"  caller text\t";
    const std::u16string original(caller);
    String w(String::ACQUIRE_WRAP, caller);
    EXPECT_EQ(w.getData(), caller);
    String copy(w);
    w.setCharAt(2, u'C');
    w.append(u"!").toUpper().trim();
    copy.replace(0, 2, u"x");
    EXPECT_EQ(std::u16string(caller), original);
    EXPECT_EQ(text(w), u"CALLER TEXT\t!");
    EXPECT_EQ(text(copy), u"xcaller text\t");

    static const STRUCT_QV_STR_LIT_INFO literal = strLit(u"literal");
    String lit(literal);
    EXPECT_EQ(lit.getData(), literal.text);
    EXPECT_EQ(lit.getLength(), 7);
    lit.insert(0, u'>');
    EXPECT_EQ(text(lit), u">literal");
    EXPECT_EQ(std::u16string(literal.text), u"literal");
    EXPECT_EQ(text(QV_STR(u"macro")), u"macro");

    String w2;
    w2.setTo(String::ACQUIRE_WRAP, caller, 5);
    EXPECT_EQ(w2.getData(), caller);
    w2.clear();
    EXPECT_EQ(std::u16string(caller), original);
}

TEST(StringEditing, EveryEditIsTheGeneralReplace)
{
    String s(u"hello");
    s.replace(1, 3, u"ipp");
    EXPECT_EQ(text(s), u"hippo");
    s.replace(-1, 0, u" pool");
    EXPECT_EQ(text(s), u"hippo pool");
    s.replace(99, 5, u"!");
    EXPECT_EQ(text(s), u"hippo pool!");
    s.replace(6, -1, u"xyz", -1, 1);
    EXPECT_EQ(text(s), u"hippo yz");
    s.replace(0, 5, u"ab", 2, 7);
    EXPECT_EQ(text(s), u" yz") << "a text start beyond the text inserts nothing";
    s.prepend(u"say").insert(3, u',').append(u'.', 3);
    EXPECT_EQ(text(s), u"say, yz...");
    s.remove(3, 2).remove(5);
    EXPECT_EQ(text(s), u"sayyz");
    s.resize(7, u'-');
    EXPECT_EQ(text(s), u"sayyz--");
    s.resize(2, u'-');
    EXPECT_EQ(text(s), u"sa");
    s += u"lt";
    s += String(u"ed");
    EXPECT_EQ(text(s), u"salted");
    s.translate(u'e', u'a');
    EXPECT_EQ(text(s), u"saltad");
    s.translate(u"sad", u"SA");
    EXPECT_EQ(text(s), u"SAltAd");
    s.toLower();
    EXPECT_EQ(text(s), u"saltad");
    s.clear();
    EXPECT_EQ(s.getLength(), 0);
    EXPECT_EQ(s.getData()[0], 0);
}

TEST(StringEditing, TextFromTheStringItselfSurvivesTheEdit)
{
    String s(u"abcdef");
    s.append(s);
    EXPECT_EQ(text(s), u"abcdefabcdef");
    s.insert(1, s.getData() + 6, 3);
    EXPECT_EQ(text(s), u"aabcbcdefabcdef");
    for (int i = 0; i < 5; ++i)
        s.append(s.getData(), s.getLength());
    EXPECT_EQ(s.getLength(), 15 * 32);
    EXPECT_EQ(s.substring(15 * 31), String(u"aabcbcdefabcdef"));
}

TEST(StringEditing, CharacterAccessChecksItsIndex)
{
    String s(u"abc");
    EXPECT_EQ(s[0], u'a');
    EXPECT_EQ(s.getCharAt(2), u'c');
    EXPECT_EQ(s.getCharAt(3), 0) << "the terminator may be read";
    EXPECT_THROW(s.getCharAt(4), RangeErrorException);
    EXPECT_THROW(s.getCharAt(-1), RangeErrorException);
    EXPECT_THROW(s.setCharAt(3, u'x'), RangeErrorException);
    EXPECT_EQ(text(s), u"abc");
}

TEST(StringTrim, TrimsOnlyTheListedUnits)
{
    String s(u" \tx \r\n");
    s.trim(String::TRIM_BOTH);
    EXPECT_EQ(text(s), u"x");
    String other(u"\f\u00a0 y \u00a0\f");
    other.trim();
    EXPECT_EQ(text(other), u"\f\u00a0 y \u00a0\f") << "form feed and no-break space are kept";
    EXPECT_EQ(text(String(u"  both  ").trim(String::TRIM_LEADING)), u"both  ");
    EXPECT_EQ(text(String(u"  both  ").trim(String::TRIM_TRAILING)), u"  both");
    EXPECT_EQ(text(String(u"--x--").trim(u'-')), u"x");
    EXPECT_EQ(text(String(u"xyaxy").trim(u"xy", -1)), u"a");
    EXPECT_EQ(text(String(u"xyaxy").trim(u"xz", 1)), u"yaxy");
    EXPECT_EQ(text(String(u"xyaxy").trim(u"xy", String::TRIM_LEADING)), u"axy");
    EXPECT_EQ(text(String(u"xyaxy").trim(u"yx")), u"a");
    String set(u"ab");
    EXPECT_EQ(text(String(u"abcba").trim(set, String::TRIM_TRAILING)), u"abc");
    String padded(u"  ab  ");
    String sharer(padded);
    sharer.trim();
    EXPECT_EQ(text(sharer), u"ab");
    EXPECT_EQ(text(padded), u"  ab  ");
    String all(u" \t ");
    EXPECT_EQ(all.trim().getLength(), 0);
    String untouched(u"clean");
    String holder(untouched);
    untouched.trim();
    EXPECT_EQ(untouched.getData(), holder.getData()) << "nothing to trim, nothing copied";
}

TEST(StringQueries, CompareUsesTheLengthDifferenceAfterAnEqualPrefix)
{
    String abc(u"abc");
    EXPECT_EQ(abc.compare(u"abcd"), -1);
    EXPECT_EQ(abc.compare(u"abcdef"), -3);
    EXPECT_EQ(String(u"abcdef").compare(u"abc"), 3);
    EXPECT_EQ(abc.compare(u"abc"), 0);
    EXPECT_EQ(abc.compare(u"abd"), -1);
    EXPECT_EQ(String(u"\uffff").compare(u"a"), 1) << "units compare unsigned";
    EXPECT_EQ(abc.compare(u"ABC"), 1);
    EXPECT_EQ(abc.compare(u"ABC", true), 0);
    EXPECT_EQ(abc.compare(u"ABD", true), -1);
    EXPECT_EQ(abc.compareTo(String(u"abd")), -1);
    EXPECT_TRUE(abc < String(u"abd"));

    std::u16string longText(4096, u'q');
    String left(longText.c_str());
    longText[3000] = u'r';
    EXPECT_EQ(left.compare(longText.c_str()), -1);
    longText[3000] = u'p';
    EXPECT_EQ(left.compare(longText.c_str()), 1);

    EXPECT_TRUE(abc.equals(u"abc"));
    EXPECT_TRUE(abc.equals(u"aBc", true));
    EXPECT_FALSE(abc.equals(u"ab"));
    EXPECT_TRUE(abc.equals(String(u"abc")));
    EXPECT_FALSE(abc.equals(*makeReference<util::RWCharBuffer>(4)));
    EXPECT_TRUE(abc == u"abc");
    EXPECT_TRUE(abc != String(u"abd"));

    String s(u"Hello World");
    EXPECT_TRUE(s.startsWith(u"Hello"));
    EXPECT_TRUE(s.startsWith(u"hello", true));
    EXPECT_FALSE(s.startsWith(u"hello"));
    EXPECT_TRUE(s.endsWith(u"World"));
    EXPECT_FALSE(s.endsWith(u"xWorld"));
    EXPECT_TRUE(s.regionMatches(6, 5, u"World", -1, 0));
    EXPECT_TRUE(s.regionMatches(6, 3, u"xxWORLD", 7, 2, true) == false);
    EXPECT_TRUE(s.regionMatches(6, 5, u"xxWORLD", 7, 2, true));
    EXPECT_EQ(s.regionCompare(0, 5, String(u"Help")), -1);
    EXPECT_TRUE(s.contains(u"lo W"));
    EXPECT_TRUE(s.contains(u'W'));
    EXPECT_FALSE(s.contains(u"low"));
}

TEST(StringQueries, SearchesForwardBackwardAndWithoutCase)
{
    String s(u"abcabcABC");
    EXPECT_EQ(s.indexOf(u'b'), 1);
    EXPECT_EQ(s.indexOf(u'b', 2), 4);
    EXPECT_EQ(s.indexOf(u'B'), 7);
    EXPECT_EQ(s.indexOf(u'B', 0, true), 1);
    EXPECT_EQ(s.indexOf(u'z'), -1);
    EXPECT_EQ(s.indexOf(u"cab"), 2);
    EXPECT_EQ(s.indexOf(u"CAB", 0, true), 2);
    EXPECT_EQ(s.indexOf(u"abc", 1), 3);
    EXPECT_EQ(s.indexOf(u"abc", 4), -1);
    EXPECT_EQ(s.indexOf(u"", 4), 4);
    EXPECT_EQ(s.indexOf(u"abc", 99), -1);
    EXPECT_EQ(s.lastIndexOf(u'a'), 3);
    EXPECT_EQ(s.lastIndexOf(u'a', -1, true), 6);
    EXPECT_EQ(s.lastIndexOf(u'a', 2), 0);
    EXPECT_EQ(s.lastIndexOf(u"abc"), 3);
    EXPECT_EQ(s.lastIndexOf(u"abc", -1, true), 6);
    EXPECT_EQ(s.lastIndexOf(u"abc", 2), 0);
    EXPECT_EQ(s.lastIndexOf(u"abcd"), -1);
    EXPECT_EQ(s.findFirstOf(u"cb"), 1);
    EXPECT_EQ(s.findFirstOf(u"C", 0, true), 2);
    EXPECT_EQ(s.findFirstOfCase(u"C"), 8);
    EXPECT_EQ(s.findFirstNotOf(u"ab"), 2);
    EXPECT_EQ(s.findLastOf(u"ab"), 4);
    EXPECT_EQ(s.findLastOf(u"ab", -1, true), 7);
    EXPECT_EQ(s.findLastNotOf(u"BC"), 6);
    EXPECT_EQ(s.findLastNotOf(u"abc", 5), -1);
}

// A wide text given with a length is read up to that length only; the
// pointer-and-bool overloads still take the bool as ignoreCase.
TEST(StringQueries, WideTextWithALengthIsCutToIt)
{
    String s(u"Hello World");
    const unsigned short helloUpper[] = {'H', 'E', 'L', 'L', 'O', '!', 0};
    EXPECT_TRUE(String(u"Hello").equals(u"Hello!", 5));
    EXPECT_FALSE(String(u"Hello").equals(u"HELLO!", 5));
    EXPECT_TRUE(String(u"Hello").equals(helloUpper, 5, true));
    EXPECT_TRUE(String(u"Hello").equals(u"HELLO", true));
    EXPECT_EQ(s.compare(u"Hello", 3), 8);
    EXPECT_EQ(s.compare(u"HELLO WORLD", -1, true), 0);
    EXPECT_EQ(s.compare(u"HELLO WORLD", true), 0);
    EXPECT_EQ(s.compare(helloUpper, 5, true), 6);
    EXPECT_TRUE(s.startsWith(u"Help", 3));
    EXPECT_FALSE(s.startsWith(u"hE"));
    EXPECT_TRUE(s.endsWith(u"ld!", 2));
    EXPECT_TRUE(s.contains(u"o W!", 3));
    EXPECT_EQ(s.indexOf(u"o!", 1, 5, false), 7);
    EXPECT_EQ(s.indexOf(helloUpper, 2, 0, true), 0);
    EXPECT_EQ(s.lastIndexOf(u"l!", 1, -1, false), 9);
    EXPECT_EQ(s.findFirstOf(u"W!", 1, 0, false), 6);
    EXPECT_EQ(s.findFirstNotOf(u"Hel!", 3, 0, false), 4);
    EXPECT_EQ(s.findLastOf(u"o!", 1, -1, false), 7);
    EXPECT_EQ(s.findLastNotOf(u"dl!", 2, -1, false), 8);
    EXPECT_EQ(s.findFirstOfCase(u"wW", 1, 0), -1);
}

TEST(StringQueries, LongSearchesAgreeWithTheStandardLibrary)
{
    std::mt19937 random(7);
    std::u16string hay;
    for (int i = 0; i < 20000; ++i)
        // Some units share the low byte of a letter, some carry it as their
        // high byte: neither may pass for the letter.
        hay += static_cast<char16_t>(u'a' + random() % 4 + (random() % 50 == 0 ? 0x100 : 0) +
                                     (random() % 40 == 0 ? 0x6100 : 0));
    String s(hay.c_str(), static_cast<int32_t>(hay.size()));
    for (int trial = 0; trial < 300; ++trial) {
        size_t n = 1 + random() % 12;
        size_t at = random() % (hay.size() - n);
        std::u16string needle = hay.substr(at, n);
        if (trial % 3 == 0)
            needle[n - 1] = static_cast<char16_t>(needle[n - 1] ^ 0x100);
        size_t from = random() % hay.size();
        size_t expected = hay.find(needle, from);
        int32_t got = s.indexOf({needle.data(), static_cast<int32_t>(n)}, static_cast<int32_t>(from));
        ASSERT_EQ(got, expected == std::u16string::npos ? -1 : static_cast<int32_t>(expected))
            << "needle length " << n << " from " << from;
        size_t expectedLast = hay.rfind(needle, from);
        int32_t gotLast = s.lastIndexOf({needle.data(), static_cast<int32_t>(n)}, static_cast<int32_t>(from));
        ASSERT_EQ(gotLast, expectedLast == std::u16string::npos ? -1 : static_cast<int32_t>(expectedLast));
    }
}

TEST(StringQueries, SubstringClampsItsEnds)
{
    String hello(u"hello");
    EXPECT_EQ(text(hello.substring(2, -1)), u"llo");
    EXPECT_EQ(text(hello.substring(4, 2)), u"");
    EXPECT_EQ(text(hello.substring(1, 99)), u"ello");
    EXPECT_EQ(text(hello.substring(-3, 2)), u"he");
}

TEST(StringHash, SamplesLongTextsAtTheirStride)
{
    for (int n : {1, 31, 32, 63, 64, 95, 96, 200, 4096}) {
        std::u16string s;
        for (int i = 0; i < n; ++i)
            s += static_cast<char16_t>(u'A' + (i * 7) % 50);
        EXPECT_EQ(String(s.c_str()).hashCode(), referenceHash(s)) << n;
    }
    // Up to 63 units every unit counts; from 64 every second, from 96 every
    // third: a change to a skipped unit leaves the hash as it was.
    const struct {
        int length;
        int changed;
        bool counted;
    } changes[] = {{63, 62, true}, {64, 1, false}, {64, 2, true}, {96, 4, false}, {96, 3, true}};
    for (const auto& c : changes) {
        std::u16string changed(static_cast<size_t>(c.length), u'k');
        const uint32_t before = String(changed.c_str()).hashCode();
        changed[static_cast<size_t>(c.changed)] = u'z';
        EXPECT_EQ(String(changed.c_str()).hashCode() != before, c.counted) << c.length << " units, " << c.changed;
    }
    EXPECT_EQ(String(u"MiXeD").hashCode(true), String(u"mixed").hashCode(true));
    EXPECT_EQ(String(u"mixed").hashCode(true), String(u"mixed").hashCode());
}

TEST(StringCharBufferFace, OtherCodeFillsAStringThroughTheInterface)
{
    String target(u"old");
    String sharer(target);
    Reference<util::RWCharBuffer> source = makeReference<util::RWCharBuffer>(u"filled in", 9);
    EXPECT_EQ(QVCopyCharBuffer(&target, source.get()), 0);
    EXPECT_EQ(text(target), u"filled in");
    EXPECT_EQ(text(sharer), u"old") << "the write went through copy-on-write";

    util::ICharBuffer* face = &target;
    char16_t* p = nullptr;
    ASSERT_EQ(face->GetWriteLock(20, &p), 0);
    std::memcpy(p, u"measured", 9 * sizeof(char16_t));
    EXPECT_EQ(face->ReleaseWriteLock(-1), 0);
    EXPECT_EQ(text(target), u"measured");
    EXPECT_EQ(face->GetLength(), 8);
    EXPECT_EQ(face->IsWritable(), 1);
    ASSERT_EQ(face->GetWriteLock(2, &p), 0);
    EXPECT_EQ(face->ReleaseWriteLock(2), 0);
    EXPECT_EQ(text(target), u"me");
    ASSERT_EQ(face->GetWriteLock(2, &p), 0);
    EXPECT_EQ(face->ReleaseWriteLock(-5), results::INVALIDARG);
    EXPECT_EQ(text(target), u"me");

    Reference<util::RWCharBuffer> copy = makeReference<util::RWCharBuffer>();
    EXPECT_EQ(QVCopyCharBuffer(copy.get(), &target), 0);
    EXPECT_EQ(std::u16string(copy->GetData(), static_cast<size_t>(copy->GetLength())), u"me");

    Reference<util::IQVCharBuffer> asked;
    Reference<String> heap(static_cast<String*>(target.clone()));
    ASSERT_EQ(heap->QueryInterface(util::IQVCharBuffer::iid, asked.putVoid()), 0);
    EXPECT_EQ(asked->GetData(), target.getData());
}

namespace {
class DerivedString : public String {
public:
    using String::String;
};
} // namespace

TEST(StringObject, CloneOnlyForExactlyAString)
{
    DerivedString derived(u"sub");
    EXPECT_THROW(derived.clone(), CloneNotSupportedException);
    String plain(u"plain");
    Reference<Object> clone(plain.clone());
    EXPECT_EQ(static_cast<String*>(clone.get())->getData(), plain.getData());
    EXPECT_EQ(text(plain.toString()), u"plain");
}

TEST(StringNarrowCache, EncodingNamesCompareAsciiCaseInsensitively)
{
    Reference<String::AnsiBytes> none = makeReference<String::AnsiBytes>(nullptr);
    Reference<String::AnsiBytes> utf8 = makeReference<String::AnsiBytes>(u"utf-8");
    EXPECT_TRUE(none->encodingEquals(nullptr));
    EXPECT_FALSE(none->encodingEquals(u"utf-8"));
    EXPECT_FALSE(utf8->encodingEquals(nullptr));
    EXPECT_TRUE(utf8->encodingEquals(u"UTF-8"));
    EXPECT_TRUE(utf8->encodingEquals(u"Utf-8"));
    EXPECT_FALSE(utf8->encodingEquals(u"UTF-16"));
    EXPECT_FALSE(utf8->encodingEquals(u"UTF-"));
    Reference<String::AnsiBytes> accented = makeReference<String::AnsiBytes>(u"\u00e9");
    EXPECT_FALSE(accented->encodingEquals(u"\u00c9")) << "only a to z are folded";
    const unsigned short utf8Name[] = {'U', 't', 'F', '-', '8', 0};
    EXPECT_TRUE(utf8->encodingEquals(utf8Name));
    EXPECT_TRUE(makeReference<String::AnsiBytes>(utf8Name)->encodingEquals(u"utf-8"));
    EXPECT_TRUE(utf8->isWritable());
}

TEST(StringAdditions, Utf8OutputMarksUnpairedSurrogates)
{
    EXPECT_EQ(String(u"a\u00e9\u20ac\U0001F600").toUtf8(), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    const char16_t lone[] = {u'x', 0xD800, u'y', 0xDC00, 0};
    EXPECT_EQ(String(lone).toUtf8(), "x\xEF\xBF\xBDy\xEF\xBF\xBD");
}

TEST(StringAllocationFailure, TheStringKeepsTheBufferItHad)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "built without fault injection";
    String own(u"0123456789");
    const char16_t* ownData = own.getData();
    QVFaultArmAllocation(1);
    EXPECT_THROW(own.append(u"a text long enough to need a bigger block"), OutOfMemoryException);
    EXPECT_EQ(own.getData(), ownData);
    EXPECT_EQ(text(own), u"0123456789");

    String sharer(own);
    QVFaultArmAllocation(1);
    EXPECT_THROW(sharer.append(u'!'), std::bad_alloc);
    EXPECT_EQ(sharer.getData(), ownData) << "the failed copy-on-write kept the shared buffer";
    EXPECT_EQ(text(sharer), u"0123456789");

    static const char16_t fixed[] = u"fixed";
    String wrapped(String::ACQUIRE_WRAP, fixed);
    QVFaultArmAllocation(1);
    EXPECT_THROW(wrapped.toUpper(), OutOfMemoryException);
    EXPECT_EQ(wrapped.getData(), fixed);

    QVFaultArmAllocation(1);
    EXPECT_THROW(String(u"fresh"), OutOfMemoryException);
    QVFaultDisarmAll();
    sharer.append(u'!');
    EXPECT_EQ(text(sharer), u"0123456789!");
}

// Short texts keep their units in the buffer object's own block, longer ones
// in a block of their own; every length must behave alike through growth,
// shrinking and copy-on-write, on either side of the limit.
TEST(StringCopyOnWrite, TextsOfEveryLengthGrowAndCopyAlike)
{
    for (int32_t length : {1, 15, 16, 17, 200, 254, 255, 256, 257, 600}) {
        SCOPED_TRACE(length);
        std::u16string expected;
        for (int32_t i = 0; i < length; ++i)
            expected += static_cast<char16_t>(u'a' + i % 26);
        String grown(expected.data(), length);
        const String before(grown);
        for (int i = 0; i < 300; ++i) {
            grown.append(static_cast<char16_t>(u'0' + i % 10));
            expected += static_cast<char16_t>(u'0' + i % 10);
        }
        EXPECT_EQ(text(grown), expected);
        EXPECT_EQ(text(before), expected.substr(0, static_cast<size_t>(length))) << "the shared copy kept its text";

        const std::u16string half = expected.substr(0, static_cast<size_t>(length / 2));
        String sole(expected.data(), length);
        sole.remove(length / 2);
        sole.freeExtra();
        String sharer(sole);
        sole.ensureCapacity(1000);
        sole.append(u"!");
        EXPECT_EQ(text(sole), half + u"!");
        EXPECT_EQ(text(sharer), half);
        sharer.append(u'#');
        EXPECT_EQ(text(sharer), half + u"#");
        EXPECT_EQ(text(sole), half + u"!");

        // A String filled through the buffer interface past its first room.
        String filled(expected.data(), length);
        char16_t* units = filled.getWriteLock(length + 100);
        for (int32_t i = length; i < length + 100; ++i)
            units[i] = u'z';
        filled.releaseWriteLock(length + 100);
        EXPECT_EQ(text(filled), expected.substr(0, static_cast<size_t>(length)) + std::u16string(100, u'z'));
    }
}

// Copies of one String in several threads: the shared count must stay
// exact, and each writer must get a private buffer.
TEST(StringConcurrent, CopiesWriteTheirOwnBuffers)
{
    const String base(u"base text shared by every thread");
    std::vector<std::thread> threads;
    std::vector<std::u16string> results(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            String mine;
            for (int i = 0; i < 2000; ++i) {
                String copy(base);
                if (!copy.equals(base))
                    return;
                mine = copy;
                mine.append(static_cast<char16_t>(u'0' + t));
            }
            results[static_cast<size_t>(t)] = mine.toU16String();
        });
    }
    for (auto& t : threads)
        t.join();
    for (int t = 0; t < 4; ++t)
        EXPECT_EQ(results[static_cast<size_t>(t)], u"base text shared by every thread" + std::u16string(1, u'0' + t));
    EXPECT_EQ(text(base), u"base text shared by every thread");
}
