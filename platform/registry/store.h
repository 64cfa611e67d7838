#pragma once
// The registry of the machine that this process is on: its file, this process's replica, and how the two keep
// step with the other processes.
//
// A change is a record at the end of the file. Who writes holds the lock file's lock, reads what others wrote
// since, cuts off what a killed writer left half written, writes once, and then publishes how far the file
// goes, in a block that all processes share. Who reads compares that one word with what the replica has; only
// when it moved on is the file touched, and no lock is taken. The block may be zero at any time: then the
// file is looked at under the lock. A writer never trusts the block about where the records end.
//
// Locks are taken in this order: `writers_` (one thread of this process writes), the lock file's (one process
// does), `replica_lock_` (the replica stands still). The file's lock is held while waiting for the disk, and
// at most for the one reader of this process who has the replica just then.

#include <platform/registry/publication.h>
#include <platform/registry/replica.h>

#include <mutex>

class RegistryStore {
  public:
    static RegistryStore &Of_This_Process();

    /// The registry as it is now, standing still while this object lives.
    class Reading {
      public:
        Reading();
        /// A code of errors.h; unless it is 0 there is no tree.
        long Error() const { return error_; }
        const KeyTree &Tree() const { return *store_.replica_.tree; }
        /// The machine whose registry it is (Machine_Serial).
        unsigned Machine() const { return store_.machine_; }

      private:
        friend class RegistryStore;
        RegistryStore &store_;
        std::unique_lock<std::mutex> hold_; // of the replica
        long error_;
    };

    /// The same for a change. While it lives nobody else changes anything.
    class Writing {
      public:
        Writing();
        long Error() const { return error_; }
        const KeyTree &Tree() const { return *store_.replica_.tree; }
        unsigned Machine() const { return store_.machine_; }
        /// Makes the changes; on failure none of them. The tree stands as they left it.
        long Commit(std::span<const RegistryRecord> records);

      private:
        /// The lock file's lock for the length of a scope.
        class FileLock {
          public:
            ~FileLock();
            bool Take(int descriptor);

          private:
            int held_ = -1;
        };
        friend class RegistryStore;
        long Begin();

        RegistryStore &store_;
        std::unique_lock<std::mutex> writers_;
        FileLock file_lock_;
        std::unique_lock<std::mutex> hold_; // of the replica
        long error_;
    };

    /// Returns when all that is in the registry now is on the disk.
    long Flush();

    /// Throws away what killed writers left; a file with damage is written anew, and the old one kept beside
    /// it.
    long Mend();

    /// Closes what this process has open of the registry; the next call opens it again.
    void Let_Go();

  private:
    // The replica's lock: who is about to write goes before those who only read.
    std::unique_lock<std::mutex> Hold_For_Reading();
    void Hold_Before_Readers(std::unique_lock<std::mutex> &hold);

    // Reading.
    bool Is_Current();
    bool Follow(std::uint64_t published);
    long Look_At_File(std::unique_lock<std::mutex> &hold);

    // The machine and its lock.
    long Enter_Current_Machine();
    void Leave_Machine();
    long Open_Lock();
    long Why_Not_Writable() const;

    // The file.
    long Settle(bool locked);
    long Refuse(long error);
    long Rewrite(std::unique_lock<std::mutex> &hold);
    long Append(std::span<const RegistryRecord> records);
    bool Wants_Compaction() const;
    void Compact(std::unique_lock<std::mutex> &hold);

    std::uint32_t Published_End() const;
    void Publish();

    std::mutex writers_;
    std::mutex replica_lock_;
    std::mutex turn_; // readers wait here while `writer_waits_`
    std::atomic<bool> writer_waits_{false};

    // Changed by who holds both locks, so that either of them is enough to read.
    unsigned machine_ = 0;
    std::string folder_; // empty: the machine has none
    std::string path_;
    Publication publication_;
    long publication_error_ = 0;
    FileDescriptor lock_file_;
    long lock_error_ = 0;

    // Behind `replica_lock_`.
    Replica replica_;
    std::uint64_t seen_ = 0;      // what was published when the replica was brought up to date
    std::uint32_t file_size_ = 0; // when the file was last looked at under its lock
    bool folder_flushed_ = false; // since the file that is open came into it
    bool refusal_reported_ = false;
    std::uint32_t compact_from_ = 0; // no smaller file is rewritten
    std::vector<unsigned char> bytes_;
};
