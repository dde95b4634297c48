// SPDX-License-Identifier: MIT
// pipeline: checksums of files, computed by several threads.
//
// The main thread puts paths into a queue, whose condition lock lets workers wait for work; a worker that is done with
// a file posts a notification, and the report, which observes it, collects the results.
#include <Bedrock/Bedrock.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace {

ZPString *const FileDone = "FileDone"_zp;

std::uint32_t checksum(ZPData *data) {  // CRC-32
    static const auto table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            t[i] = i;
            for (int k = 0; k < 8; ++k) t[i] = t[i] >> 1 ^ (t[i] & 1 ? 0xEDB88320u : 0);
        }
        return t;
    }();
    std::uint32_t c = ~0u;
    auto *bytes = static_cast<const unsigned char *>(data->bytes());
    for (unsigned i = 0; i < data->length(); ++i) c = table[(c ^ bytes[i]) & 255] ^ c >> 8;
    return ~c;
}

}  // namespace

/// A queue that threads take from until it is closed.
struct Queue : ZPObject {
    ZP_CLASS(Queue)
    enum { Empty, Filled };
    ZPRef<ZPConditionLock> _lock = ZPAdopt(ZPConditionLock::alloc()->initWithCondition(Empty));
    ZPRef<ZPMutableArray> _items = ZPAdopt(ZPMutableArray::new_());
    bool _closed = false;

    void put(id item) {
        _lock->lock();
        _items->addObject(item);
        _lock->unlockWithCondition(Filled);
    }
    void close() {
        _lock->lock();
        _closed = true;
        _lock->unlockWithCondition(Filled);  // wakes whoever waits
    }
    /// The next item; null when the queue is closed and empty.
    ZPRef<ZPString> take() {
        _lock->lockWhenCondition(Filled);
        ZPRef<ZPString> item;
        if (_items->count()) {
            item = _items->objectAtIndex(0);
            _items->removeObjectAtIndex(0);
        }
        _lock->unlockWithCondition(_closed || _items->count() ? Filled : Empty);
        return item;
    }
};
ZP_IMPLEMENT(Queue);

/// Takes files from the queue on a thread of its own.
struct Worker : ZPObject {
    ZP_CLASS(Worker)

    void work(Queue *queue) {
        while (ZPRef<ZPString> path = queue->take()) {
            ZPAutoreleasePoolScope pool;
            ZPData *data = ZPData::dataWithContentsOfFile(path);
            ZPString *text = data ? ZPString::stringWithFormat("%08x %7u"_zp, checksum(data), data->length())
                                  : "cannot be read  "_zp;
            ZPNotificationCenter::defaultCenter()->postNotificationName_object_userInfo(
                FileDone, this, ZPMakeDictionary({{path, text}}));
        }
    }
};
ZP_IMPLEMENT(Worker, work);

/// Collects results from every thread. The lock's condition is the number of files still to come.
struct Report : ZPObject {
    ZP_CLASS(Report)
    ZPRef<ZPConditionLock> _lock;
    ZPRef<ZPMutableDictionary> _results = ZPAdopt(ZPMutableDictionary::new_());

    void fileDone(ZPNotification *notification) {  // on the worker's thread
        ZPRef<Report> alive(this);  // once the last result is in, the main thread lets go
        _lock->lock();
        _results->addEntriesFromDictionary(notification->userInfo());
        _lock->unlockWithCondition(_lock->condition() - 1);
    }
    void waitForAll() {
        _lock->lockWhenCondition(0);
        _lock->unlock();
    }
    void dealloc() {
        ZPNotificationCenter::defaultCenter()->removeObserver(this);
        ZP_SUPER(Report, dealloc)();
    }
};
ZP_IMPLEMENT(Report, fileDone, dealloc);

int main(int argc, char **argv) {
    ZPAutoreleasePoolScope pool;
    int workers = 2;
    ZPMutableArray *paths = ZPMutableArray::array();
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--workers" && i + 1 < argc) workers = std::atoi(argv[++i]);
        else paths->addObject(ZPMakeString(argv[i]));
    }
    if (!paths->count() || workers < 1) return std::cerr << "usage: pipeline [--workers COUNT] FILE...\n", 2;

    ZPRef<Queue> queue = ZPAdopt(Queue::new_());
    ZPRef<Report> report = ZPAdopt(Report::new_());
    report->_lock = ZPAdopt(ZPConditionLock::alloc()->initWithCondition(int(paths->count())));
    ZPNotificationCenter::defaultCenter()->addObserver_selector_name_object(report, "fileDone:"_sel, FileDone, nullptr);
    ZPRef<Worker> worker = ZPAdopt(Worker::new_());
    while (workers--) ZPThread::detachNewThreadSelector_toTarget_withObject("work:"_sel, worker, queue);
    for (ZPString *path : paths) queue->put(path);
    queue->close();
    report->waitForAll();
    for (ZPString *path : paths)
        std::cout << report->_results->objectForKey(path)->description() << "  " << path << "\n";
}
