#include <gtest/gtest.h>
#include <memory>
#include <morvane/morvane.h>

using namespace morvane::literals;

namespace {

TEST(String, AnswersWithConstantsWhateverItIsGiven) {
    _String text;
    text = u"some text"_w;
    text += u"more"_w;
    text.SetAt(0, u'x');
    text.Format(u"%d"_w, 5);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.GetAt(-7), u'A');
    EXPECT_EQ(text[1000], u'A');
    EXPECT_EQ(static_cast<unsigned short int const *>(text), nullptr);
    EXPECT_EQ(text.Find(u"absent"_w), 0);
    EXPECT_EQ(text.ReverseFind(u'z'), 0);
    EXPECT_EQ(text.Compare(u"other"_w), 0);
    EXPECT_EQ(text.Insert(3, u"in"_w), 0);
    EXPECT_EQ(text.GetLength(), 0U);
    EXPECT_EQ(&(text = text), &text);
    for (_String each : {_String(text), _String("a"), _String(u"a"_w, 3), _String(u'a', 3), text.Mid(1, 2),
                         text.SpanIncluding(u"a"_w), text.Left(1), text.Right(1)}) {
        EXPECT_TRUE(each.IsEmpty());
        EXPECT_EQ(each.GetLength(), 0U);
    }
}

TEST(NamedObject, SharesItsNameHolderWithItsCopies) {
    std::unique_ptr<_String> holder;
    {
        _NamedObject object;
        holder.reset(object.GetObjectName());
        ASSERT_NE(holder, nullptr);
        object.SetObjectName(u"name"_w);
        EXPECT_EQ(object.GetObjectName(), holder.get());
        EXPECT_TRUE(holder->IsEmpty());
        _NamedObject copy(object);
        EXPECT_EQ(copy.GetObjectName(), holder.get());
        _NamedObject assigned;
        std::unique_ptr<_String> const former(assigned.GetObjectName());
        assigned = object;
        EXPECT_EQ(assigned.GetObjectName(), holder.get());
    }
    EXPECT_EQ(holder->Compare(u"still there"_w), 0);
}

} // namespace
