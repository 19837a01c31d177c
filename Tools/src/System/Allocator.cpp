// The settings of the allocator that a program gets which links FrameAllocator: jemalloc in place of the C library's.
//
// A frame's buffers are hundreds of megabytes, created and released again for every frame, by the driver too. Mapping
// fresh pages for them takes longer than the rendering. The C library (2.36) cannot be talked into keeping them for
// all: what it releases of an aligned block is a few bytes too small for the next block of that size. jemalloc hands
// the same pages out again.
// - dirty_decay_ms:-1  released memory never goes back to the system. Price: the process keeps its largest need.
// - thp:always         large pages where the system has them: a first touch costs a quarter, and the kernels, which
//                      read whole frames, find their pages faster.
// MALLOC_CONF in the environment comes after this and wins.
extern "C" {
extern const char* malloc_conf;
const char* malloc_conf = "dirty_decay_ms:-1,thp:always";
}
