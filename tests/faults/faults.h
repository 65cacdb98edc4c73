#pragma once

/// What the library fault_shim.cpp does at a call of the system. Calls are counted from 1, from arming on; each call
/// that concerns files is one: open, close, read, write, fsync, rename, link, unlink, mkdir, stat, chmod, chown,
/// access, readlink, flock, truncate, mkstemp, getrandom, in all their forms. Not what the C library does inside
/// itself, for its streams.
enum class Fault
{
    none,     ///< nothing, and nothing is counted
    count,    ///< nothing
    fail,     ///< this one call fails
    failFrom, ///< this one and all later ones fail
    shorten,  ///< when it reads or writes, it does so for half of the bytes
    kill,     ///< the process ends, as by SIGKILL, before it
    trickle,  ///< this one and all later ones read and write one byte only
    interrupt ///< from this one on, every second one that reads or writes is interrupted by a signal
};

/// A fault, and the system's reason for it: an errno, where the fault is one that has a reason.
struct Failure
{
    Fault fault;
    int error;
};

/// A program that is run with the library before it is armed from its start on by the variable QXP_FAULTS: the action,
/// the number of the call and the error as numbers, and a file of 8 bytes that is told the number of calls so far, with
/// colons between them.
extern "C" {
/// Begins to count.
void vcq_fault_arm(Fault action, long at, int error);
/// Ends it; how many calls there have been.
long vcq_fault_disarm();
/// Has the number of calls so far told here, too.
void vcq_fault_tell(long* number);
}
