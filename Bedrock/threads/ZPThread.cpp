// Thread objects hang from the platform layer's per-thread data, so the look-up is one load from
// thread-local storage and stays right whatever becomes of stacks.
#include <Bedrock/threads/ZPThread.h>

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/platform/ZPKernel.h>

namespace {

void endThread(ZPThreadData *data) {
    if (!data->thread) return;
    unsigned pool = ZPPushAutoreleasePool(0);
    reinterpret_cast<ZPThread *>(data->thread)->release();
    data->thread = nullptr;
    ZPPopAutoreleasePool(pool);
}

struct ThreadMethods : ZPThread {
    static ZPThread *current(Class) {
        ZPThreadData *data = ZPCurrentThreadData();
        if (!data->thread) [[unlikely]] {
            ZPThread *thread = ZPThread::alloc()->init();
            thread->_cthread = cthread_self();
            data->thread = thread;
            ZPCleanUpThread(endThread);
        }
        return static_cast<ZPThread *>(data->thread);
    }
    ZPMutableDictionary *threadDictionary() {
        if (!_threadDictionary) {
            id dictionary = objc_msgSend<id>(objc_getClass("ZPMutableDictionary"), "allocWithZone:"_sel, zone());
            _threadDictionary = (ZPMutableDictionary *)objc_msgSend<id>(dictionary, "initWithCapacity:"_sel, 3u).pointer();
        }
        return _threadDictionary;
    }
    ZPString *description() {
        return objc_sendVariadic<ZPString *, ZPString *>::send(objc_getClass("ZPString"), "stringWithFormat:"_sel, "Thread %d"_zp, int(_cthread));
    }
    void dealloc() {
        objc_msgSend(id((objc_object *)_threadDictionary), "release"_sel);
        objc_super<ZPThread>(this).send("dealloc"_sel);
    }
};

}  // namespace

ZP_IMPLEMENT(ZPThread)
    .method<&ThreadMethods::threadDictionary>("threadDictionary")
    .method<&ThreadMethods::description>("description")
    .method<&ThreadMethods::dealloc>("dealloc")
    .classMethod<&ThreadMethods::current>("currentThread");
