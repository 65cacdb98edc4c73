#pragma once

/// What the library fault_shim.cpp does at a call of the system. Calls are counted from 1, from arming on; each call
/// that concerns files is one: open, close, read, write, fsync, rename, link, unlink, mkdir, stat, chmod, chown,
/// access, readlink, flock, getrandom, in all their forms.
enum class Fault
{
    none,     ///< nothing, and nothing is counted
    count,    ///< nothing
    fail,     ///< this one call fails
    failFrom, ///< this one and all later ones fail
    shorten,  ///< when it reads or writes, it does so for half of the bytes
    kill      ///< the process ends, as by SIGKILL, before it
};

extern "C" {
/// Begins to count.
void vcq_fault_arm(Fault action, long at, int error);
/// Ends it; how many calls there have been.
long vcq_fault_disarm();
}
