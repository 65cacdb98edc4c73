#include "base/ticket_queue_detail.h"
#include "script/script_link.h"

#include <wx/app.h>
#include <wx/module.h>
#include <wx/thread.h>

#include <memory>

// What becomes of a native object whose script object is dead. The running application deletes it when it is idle,
// since it may be in the middle of an event or have some on their way. Where no application has events to dispatch it
// goes at once.
namespace
{

/// What native objects that wait may take. A script that never lets the application be idle would keep all that it has
/// dropped; past this, the oldest go at the end of the next native.
constexpr std::size_t MostBytesWaiting = 16 * 1024 * 1024;
/// Beside what was announced for an object: the link, and what classes do not announce.
constexpr std::size_t BytesOfAny = 200;

class WaitingNatives
{
public:
    /// Returns the number by which the object is taken back.
    JSCallTicket Add(wxAppConsole& application, wxObject* native, std::size_t bytes)
    {
        if (!m_idleTask)
            application.ScheduleForDestruction(m_idleTask = new IdleTask(*this));
        m_bytes += bytes;
        return m_natives.Push({native, bytes});
    }

    void Remove(JSCallTicket ticket)
    {
        if (Waiting* const waiting = m_natives.Find(ticket)) {
            m_bytes -= waiting->bytes;
            *waiting = {};
        }
    }

    void DeleteOldest()
    {
        const Waiting oldest = m_natives.Pop();
        m_bytes -= oldest.bytes;
        delete oldest.native;
    }

    /// Deletes the oldest until the others take no more than they may. The newest always stays.
    void MakeRoom()
    {
        while (m_bytes > MostBytesWaiting && !m_natives.HasOne())
            DeleteOldest();
    }

    void DeleteAll()
    {
        while (!m_natives.IsEmpty())
            DeleteOldest();
    }

    /// No application will be idle any more.
    void EndTask()
    {
        if (m_idleTask)
            wxPendingDelete.DeleteObject(m_idleTask);
        delete m_idleTask;
    }

private:
    struct Waiting
    {
        wxObject* native = nullptr; ///< Null: deleted by others.
        std::size_t bytes = 0;
    };

    /// Stands for all of them in the application's list, in which each object is searched for before it is added.
    class IdleTask : public wxObject
    {
    public:
        explicit IdleTask(WaitingNatives& natives) : m_natives(natives) {}
        ~IdleTask() override
        {
            m_natives.DeleteAll();
            m_natives.m_idleTask = nullptr;
        }

    private:
        WaitingNatives& m_natives;
    };

    vcq::detail::TicketQueue<Waiting> m_natives;
    std::size_t m_bytes = 0;
    IdleTask* m_idleTask = nullptr; ///< The application's, while objects wait.
};

/// Of the main thread, which is the application's. Never destroyed, since static objects may outlive it.
WaitingNatives& TheWaitingNatives()
{
    static auto& natives = *new WaitingNatives;
    return natives;
}

bool g_isProgramEnding = false;

/// A program may end from inside its application.
struct ProgramEnd
{
    ~ProgramEnd()
    {
        g_isProgramEnding = true;
        TheWaitingNatives().EndTask();
    }
};

const ProgramEnd programEnd;

/// What the application has left goes while wxWidgets is still there.
class NativeDeletionModule : public wxModule
{
public:
    bool OnInit() override { return true; }
    void OnExit() override { TheWaitingNatives().EndTask(); }

    wxDECLARE_DYNAMIC_CLASS(NativeDeletionModule);
};

wxIMPLEMENT_DYNAMIC_CLASS(NativeDeletionModule, wxModule);

/// The application that has events to dispatch on this thread; null for none.
wxAppConsole* RunningApplication()
{
    wxAppConsole* const application = wxAppConsole::GetInstance();
    return application && application->UsesEventLoop() && wxIsMainThread() && !g_isProgramEnding ? application
                                                                                                 : nullptr;
}

} // namespace

void CJScriptLink::DeleteOwnerLater(JSContext* cx)
{
    m_deletion = Deletion::AtSafePoint;
    JS_CallAfterNative(
        cx, [](void* link) { static_cast<CJScriptLink*>(link)->DeleteOwner(); }, this, &m_deletionTicket);
}

void CJScriptLink::DeleteOwner()
{
    wxAppConsole* const application = RunningApplication();
    if (!application) {
        m_deletion = Deletion::None;
        delete m_owner;
    } else if (m_isEventHandler) {
        // Applications ask whether windows are in their list.
        m_deletion = Deletion::Scheduled;
        application->ScheduleForDestruction(m_owner);
    } else {
        m_deletion = Deletion::Waiting;
        m_deletionTicket = TheWaitingNatives().Add(*application, m_owner, m_announcedBytes + BytesOfAny);
        TheWaitingNatives().MakeRoom();
    }
}

void CJScriptLink::CancelDeletion()
{
    switch (m_deletion) {
    case Deletion::None:
        break;
    case Deletion::AtSafePoint:
        JS_CancelCall(m_deletionTicket, this);
        break;
    case Deletion::Waiting:
        TheWaitingNatives().Remove(m_deletionTicket);
        break;
    case Deletion::Scheduled:
        wxPendingDelete.DeleteObject(m_owner);
    }
}
