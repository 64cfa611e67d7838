#pragma once
// The classes that running programs offer: a socket each in a folder of the machine's own, which nobody but
// its owner can enter. The name says the class and when it was listed, so that the first one is found first.
//
// A socket has its name only once it can be connected to: one that refuses, or answers for a process that is
// no more, belongs to a program that has ended, and its name is taken away by whoever finds it. Until then it
// has another name, which whoever lists a class takes away when the program has ended.

#include <platform/com.h>
#include <platform/kernel/file_descriptor.h>

#include <memory>
#include <string>

/// What a class cannot be listed for: E_ACCESSDENIED of ERROR_ACCESS_DENIED, E_FAIL of all else.
HRESULT Refusal_To_List(long error);

/// A class in the list. Whoever has connected before it is withdrawn may still be accepted.
class ListedClass {
  public:
    /// E_ACCESSDENIED, and null, when the machine or the list's folder is refused as not this user's own;
    /// E_FAIL when they cannot be had or written. May throw std::bad_alloc.
    static HRESULT List(REFCLSID clsid, std::shared_ptr<ListedClass> &result);
    ListedClass(FileDescriptor socket, std::string folder, const std::string &name);
    ~ListedClass() { Withdraw(); }
    ListedClass(const ListedClass &) = delete;
    ListedClass &operator=(const ListedClass &) = delete;

    /// Connections wait at it to be accepted; never blocks.
    int Socket() const { return socket_.Get(); }
    void Withdraw();

  private:
    FileDescriptor socket_;
    std::string folder_, path_;
};

/// A connection to the first program that offers the class, empty when none does; it never blocks. May throw
/// std::bad_alloc.
FileDescriptor Connect_To_Class(REFCLSID clsid);

/// The other side's process, readable from its end on: also where a forked child keeps its socket open. Empty
/// when the host does not tell it.
FileDescriptor Process_Behind(int socket);
/// True when the other side is of this user, no other: no machine has two.
bool Is_Trusted(int socket);
