#include "base/thread_critical_section.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{

bool OtherThreadGetsIn(wxThreadCriticalSection& section)
{
    bool entered = false;
    std::thread([&] {
        entered = section.TryEnter();
        if (entered)
            section.Leave();
    }).join();
    return entered;
}

} // namespace

TEST(ThreadCriticalSectionTest, ExcludesOtherThreadsWhileTheLockerLives)
{
    wxThreadCriticalSection section;
    {
        const wxThreadCriticalSectionLocker locker(section);
        EXPECT_FALSE(OtherThreadGetsIn(section));
    }
    EXPECT_TRUE(OtherThreadGetsIn(section));
}

TEST(ThreadCriticalSectionTest, TheThreadInsideMayEnterAgainAndIsOutWhenItHasLeftAsOften)
{
    wxThreadCriticalSection section;
    section.Enter();
    {
        const wxThreadCriticalSectionLocker again(section);
        EXPECT_FALSE(OtherThreadGetsIn(section));
    }
    EXPECT_FALSE(OtherThreadGetsIn(section));
    section.Leave();
    EXPECT_TRUE(OtherThreadGetsIn(section));
}

TEST(ThreadCriticalSectionTest, SerialisesThreads)
{
    wxThreadCriticalSection section;
    int count = 0;
    const auto work = [&] {
        for (int i = 0; i < 10000; ++i) {
            const wxThreadCriticalSectionLocker locker(section);
            ++count;
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(20000, count);
}
