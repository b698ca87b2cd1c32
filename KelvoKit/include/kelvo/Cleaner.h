#pragma once
// The interface of every detector of both domains: an identity, a display name, a family
// and a scan that yields targets. A scan never fails: missing folders, tools or unreadable
// entries give fewer targets, a smaller size or a note. Cleaners are immutable and may scan
// concurrently; what a scan needs from outside (the sizer, the stop request) comes in the
// context so that one scan shares one pool of workers and one memo of sizes, and so that
// remarks that belong to no single target reach the user.
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <vector>

#include "kelvo/CleanTarget.h"
#include "kelvo/DirectorySizer.h"

namespace kelvo {

// Remarks of one scan that belong to no target (a project folder that could not be read,
// a location variable that was ignored): any thread may add, the scan's owner takes them
// at the end. Duplicates are kept once, in the order first added.
class ScanNotes {
public:
    void add(std::string note);
    std::vector<std::string> take();

private:
    std::mutex mutex_;
    std::vector<std::string> notes_;
};

struct ScanContext {
    const DirectorySizer& sizer;
    std::stop_token stop;
    // Where remarks go; a context without one drops them.
    std::shared_ptr<ScanNotes> notes = nullptr;

    void note(std::string text) const {
        if (notes) notes->add(std::move(text));
    }

    // A context of a sequential sizer and no stop request, for a cleaner scanned on its own.
    static const ScanContext& standalone();
};

class Cleaner {
public:
    virtual ~Cleaner() = default;
    virtual const std::string& id() const = 0;
    virtual const std::string& name() const = 0;
    virtual Family family() const = 0;
    virtual std::vector<CleanTarget> scan(const ScanContext& context) const = 0;

    std::vector<CleanTarget> scan() const { return scan(ScanContext::standalone()); }
};

using CleanerList = std::vector<std::shared_ptr<const Cleaner>>;

}  // namespace kelvo
