// Passwords: from the environment or standard input, never from the command line.
#ifndef CLUSCTL_PASSWORD_H
#define CLUSCTL_PASSWORD_H

#include <cstddef>
#include <utility>
#include <vector>

// A password, or the argument that is made of one. It stays in one place, and nothing of it is left there at its end.
class Password {
public:
    Password() = default;
    // Room for so many characters.
    explicit Password(std::size_t room) : m_text(room + 1) {
    }
    ~Password() {
        Forget();
    }
    Password(Password&& other) noexcept {
        *this = std::move(other);
    }
    Password& operator=(Password&& other) noexcept {
        m_text.swap(other.m_text);
        std::swap(m_size, other.m_size);
        return *this;
    }
    Password(const Password&) = delete;
    Password& operator=(const Password&) = delete;

    // Ends with a null character. Empty when there is none.
    const wchar_t* Text() const {
        return m_text.empty() ? L"" : m_text.data();
    }
    // For functions that write it. SetSize tells what they wrote.
    wchar_t* Buffer() {
        return m_text.data();
    }
    std::size_t Room() const {
        return m_text.empty() ? 0 : m_text.size() - 1;
    }
    void SetSize(std::size_t size);
    std::size_t Size() const {
        return m_size;
    }
    // There has to be room.
    void Append(wchar_t c);

    // Overwrites it.
    void Forget();

private:
    std::vector<wchar_t> m_text; // never grows, so that it leaves no copy behind
    std::size_t m_size = 0;
};

// Takes the variable CLUSCTL_PASSWORD out of the environment, so that no process that is started gets it. To be called
// before anything else. Throws Failure when it cannot be taken out.
void TakePasswordFromEnvironment();

extern const wchar_t PasswordVariable[];

// What that variable held, for another run of this program; null when it held nothing, or that has been read.
const Password* GivenPassword();

// What that variable held, or else the first line of standard input, typed unseen on a terminal. Throws Failure when
// there is none.
Password ReadPassword();

// Reads it as ReadPassword does, and keeps it for other runs of this program, as if the variable had held it.
void KeepPassword();

// As an argument that reaches a program unchanged: in quotes when it holds a blank or a quote.
Password AsArgument(const Password& password);

#endif
