// Compact trace. A call passes a message table, an index and its arguments; with no sink
// set it returns after one load. With a sink set the message is formatted here, on the
// calling thread, after checking that the format's conversions match the entry's
// arguments, so that a wrong table entry shows up as a text and not as a crash.
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>

#include "core.hpp"

extern "C" {
uint16_t g_arbor_fe_trace_module_id = 0x5a46;
}

namespace zan::plat {
namespace {

std::atomic<bool> g_trace_on{false};
std::mutex g_sink_m;
std::shared_ptr<const TraceSink> g_sink;

std::shared_ptr<const TraceSink> current_sink() {
    std::lock_guard lock(g_sink_m);
    return g_sink;
}

void install(std::shared_ptr<const TraceSink> sink) {
    std::lock_guard lock(g_sink_m);
    g_sink = std::move(sink);
    g_trace_on.store(g_sink != nullptr, std::memory_order_release);
}

// Argument kinds of the entry points, in order; 0 ends the list.
enum Arg : char { a_end = 0, a_str = 's', a_u32 = 'u', a_size = 'z' };

// Walks the printf conversions of fmt and answers whether they take exactly the
// arguments in sig.
bool conversions_match(const char* fmt, const char* sig) {
    for (const char* p = fmt; *p; ++p) {
        if (*p != '%') continue;
        ++p;
        if (*p == '%') continue;
        while (*p == '-' || *p == '+' || *p == ' ' || *p == '#' || *p == '0') ++p;
        while (*p >= '0' && *p <= '9') ++p;
        if (*p == '.') {
            ++p;
            while (*p >= '0' && *p <= '9') ++p;
        }
        int longs = 0;
        bool narrow = false;
        for (;; ++p) {
            if (*p == 'h') narrow = true;
            else if (*p == 'l' || *p == 'z' || *p == 'j' || *p == 't') ++longs;
            else break;
        }
        char kind;
        switch (*p) {
        case 's':
            if (longs || narrow) return false;
            kind = a_str;
            break;
        case 'd': case 'i': case 'u': case 'x': case 'X': case 'o': case 'c':
            kind = longs ? a_size : a_u32;
            break;
        default:
            return false;   // '*', floating point, %n, %p and a format ending in '%'
        }
        if (*sig != kind) return false;
        ++sig;
    }
    return *sig == a_end;
}

void emit(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* sig, ...) {
    std::shared_ptr<const TraceSink> sink = current_sink();
    if (!sink) return;
    try {
        TraceRecord rec;
        rec.unit = unit && unit->name ? unit->name : "";
        rec.index = index;
        rec.level = level;
        rec.module = module;
        const char* fmt = unit && unit->formats && index < unit->count ? unit->formats[index] : nullptr;
        if (!fmt) {
            char buf[64];
            std::snprintf(buf, sizeof buf, "<no message %u>", unsigned(index));
            rec.text = buf;
        } else if (!conversions_match(fmt, sig)) {
            rec.text = "<arguments do not match> ";
            rec.text += fmt;
        } else {
            char buf[512];
            va_list ap;
            va_start(ap, sig);
            int n = std::vsnprintf(buf, sizeof buf, fmt, ap);
            va_end(ap);
            if (n < 0) {
                rec.text = fmt;
            } else if (std::size_t(n) < sizeof buf) {
                rec.text.assign(buf, std::size_t(n));
            } else {
                rec.text.resize(std::size_t(n));
                va_start(ap, sig);
                std::vsnprintf(rec.text.data(), std::size_t(n) + 1, fmt, ap);
                va_end(ap);
            }
        }
        (*sink)(rec);
    } catch (...) {
        // A sink must not throw through the front end's C frames; the record is dropped.
    }
}

inline bool listening() { return g_trace_on.load(std::memory_order_relaxed); }

}  // namespace

void trace_set_sink(TraceSink sink) {
    install(sink ? std::make_shared<const TraceSink>(std::move(sink)) : nullptr);
}

void trace_clear_sink() { install(nullptr); }

// The records live in a store that the sink shares: a thread still inside the sink when
// the capture ends keeps it alive.
struct TraceStore {
    std::mutex m;
    std::vector<TraceRecord> records;
};

struct TraceCapture::Impl {
    std::shared_ptr<TraceStore> store = std::make_shared<TraceStore>();
    std::shared_ptr<const TraceSink> previous;
};

TraceCapture::TraceCapture() : impl_(new Impl) {
    impl_->previous = current_sink();
    install(std::make_shared<const TraceSink>([store = impl_->store](const TraceRecord& r) {
        std::lock_guard lock(store->m);
        store->records.push_back(r);
    }));
}

TraceCapture::~TraceCapture() {
    install(std::move(impl_->previous));
    delete impl_;
}

std::vector<TraceRecord> TraceCapture::records() const {
    std::lock_guard lock(impl_->store->m);
    return impl_->store->records;
}

void TraceCapture::clear() {
    std::lock_guard lock(impl_->store->m);
    impl_->store->records.clear();
}

}  // namespace zan::plat

using zan::plat::emit;
using zan::plat::listening;

extern "C" {

void __LTf_0(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level) {
    if (listening()) [[unlikely]]
        emit(unit, index, module, level, "");
}
void __LTf_1(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* a) {
    if (listening()) [[unlikely]]
        emit(unit, index, module, level, "s", a);
}
void __LTf_4(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, uint32_t a) {
    if (listening()) [[unlikely]]
        emit(unit, index, module, level, "u", a);
}
void __LTf_11(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* a, const char* b) {
    if (listening()) [[unlikely]]
        emit(unit, index, module, level, "ss", a, b);
}
void __LTf_14(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* a, uint32_t b) {
    if (listening()) [[unlikely]]
        emit(unit, index, module, level, "su", a, b);
}
void __LTf_15(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, const char* a, size_t b) {
    if (listening()) [[unlikely]]
        emit(unit, index, module, level, "sz", a, b);
}
void __LTf_44(const lt_unit* unit, uint32_t index, uint16_t module, uint32_t level, uint32_t a, uint32_t b) {
    if (listening()) [[unlikely]]
        emit(unit, index, module, level, "uu", a, b);
}

}  // extern "C"
