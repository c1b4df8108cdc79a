// A password on its way to a program that is started: in a pipe, so that it stands in no list of processes, no
// environment and no file.

#pragma once

#include <string>

namespace orvlog::tool
{

class PasswordPipe
{
public:
    // The programs that are started from now on can read the password. A longer one than 4096 bytes is none.
    explicit PasswordPipe(const std::string& password);
    ~PasswordPipe();
    PasswordPipe(const PasswordPipe&) = delete;
    PasswordPipe& operator=(const PasswordPipe&) = delete;

    // The name under which such a program finds it, once. Empty if there was no pipe to be had; errno says why.
    const std::string& name() const
    {
        return name_;
    }

private:
    int end_ = -1;
    std::string name_;
};

}  // namespace orvlog::tool
