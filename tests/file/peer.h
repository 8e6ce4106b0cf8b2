// SPDX-License-Identifier: MIT
// Another process: this program once more, doing one thing.
#ifndef TESTS_FILE_PEER_H
#define TESTS_FILE_PEER_H

#include <csignal>
#include <cstdlib>
#include <future>
#include <string>

#include "tests/file/file_support.h"

namespace vok {

// Things to do, by their names, for main(). The argument is what they are about; the result is the
// exit status.
using Role = int (*)(const std::string& sArgument);
struct Role_Entry {
    const char* sName;
    Role pRole;
    const Role_Entry* pNext;
};
inline const Role_Entry* g_pRoles = nullptr;
struct Role_Start {
    Role_Start(const char* sName, Role pRole) : m_oEntry{sName, pRole, g_pRoles} {
        g_pRoles = &m_oEntry;
    }
    Role_Entry m_oEntry;
};

// This program.
inline std::string ThisProgram() {
#ifdef _WIN32
    return _pgmptr;
#else
    return std::filesystem::read_symlink("/proc/self/exe").string();
#endif
}

// Runs a role in a process of its own. The result is not 0 where it did not end well.
inline std::future<int> Peer(const std::string& sRole, const std::string& sArgument) {
    const std::string sLine = ThisProgram() + " --peer " + sRole + ' ' + sArgument;
    return std::async(std::launch::async, [sLine] { return std::system(sLine.c_str()); });
}

// Ends the process as somebody who wants to see it dead would.
[[noreturn]] inline void Die() {
#ifndef _WIN32
    (void)::raise(SIGKILL);
#endif
    std::_Exit(9);
}

}  // namespace vok

#endif  // TESTS_FILE_PEER_H
