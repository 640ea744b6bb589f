#ifndef PLC_TESTS_SUPPORT_WATCHED_TEXT_H
#define PLC_TESTS_SUPPORT_WATCHED_TEXT_H

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>
#include <QtCore/QString>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <utility>

namespace plc::test {

/// A text that calls a function when its characters are read for the first time, by the thread that
/// reads them: they lie in a page that nobody may read until then. One may live at a time.
class WatchedText {
public:
    WatchedText(const char* text, std::function<void()> whenRead)
        : m_pageSize(size_t(sysconf(_SC_PAGESIZE))), m_whenRead(std::move(whenRead))
    {
        void* const page =
            mmap(nullptr, m_pageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (page == MAP_FAILED)
            std::abort();
        const QString original = QString::fromLatin1(text);
        m_page = static_cast<QChar*>(page);
        m_size = int(original.size());
        std::memcpy(page, original.constData(), size_t(m_size) * sizeof(QChar));
        mprotect(m_page, m_pageSize, PROT_NONE);

        s_watched = this;
        struct sigaction action;
        std::memset(&action, 0, sizeof action);
        action.sa_sigaction = read;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGSEGV, &action, &m_before);
    }
    ~WatchedText()
    {
        sigaction(SIGSEGV, &m_before, nullptr);
        s_watched = nullptr;
        munmap(m_page, m_pageSize);
    }
    WatchedText(const WatchedText&) = delete;
    WatchedText& operator=(const WatchedText&) = delete;

    /// The text; it and its copies must not outlive this object.
    QString text() const { return QString::fromRawData(m_page, m_size); }
    bool wasRead() const { return m_wasRead; }

private:
    static void read(int signal, siginfo_t* info, void*)
    {
        WatchedText& watched = *s_watched;
        const char* const start = reinterpret_cast<const char*>(watched.m_page);
        const char* const address = static_cast<const char*>(info->si_addr);
        if (watched.m_wasRead || address < start || address >= start + watched.m_pageSize) {
            // A fault of another kind: it comes once more and ends the process.
            sigaction(signal, &watched.m_before, nullptr);
            return;
        }
        mprotect(watched.m_page, watched.m_pageSize, PROT_READ | PROT_WRITE);
        watched.m_wasRead = true;
        watched.m_whenRead();
    }

    static inline WatchedText* s_watched = nullptr;

    const size_t m_pageSize;
    const std::function<void()> m_whenRead;
    QChar* m_page = nullptr;
    int m_size = 0;
    volatile bool m_wasRead = false;
    struct sigaction m_before;
};

} // namespace plc::test

#endif
