// What both files of kernels begin with: how a launch's items share out the pixels of an RGBA float frame.
//
// Work-item i renders pixel (i mod currentWidth, i div currentWidth); about fifteen of sixteen launched items lie
// beyond the last pixel. A frame has fewer than 2^31 pixels, so pixels fit an int, while launched items need a size_t.
//
// The kernels' shape serves compilers that run a work-group as a loop on a processor and turn a loop into vector
// instructions only if it is free of branches, library calls, integer divisions, gathered loads and vector types:
// - groups beyond the picture leave at once, before any other work, and are spread among the others;
// - what depends on the place alone comes first, for a whole group (plain float arithmetic, no branch); pixels are read
//   and written after a barrier;
// - floats cross the barrier in local memory, since a value kept in a register would be recomputed after it; whether a
//   group fits there is decided for the whole group, so that a compiler that knows the group's size drops the test;
// - no item returns after the group's common exit: some runtimes corrupt memory when items leave beside a barrier.
// Powers of the distance are written as products, in the order of summation that the results are defined by.

// The argument lists are those of the renderers; not every kernel reads every argument.
#pragma clang diagnostic ignored "-Wunused-parameter"

// GROUP_CAPACITY: items of a group whose floats fit local memory; larger groups do without. Graphics processors run
// groups of at most 1024 items, and want local memory left for other groups.
// FETCH: has a processor read ahead; its own foresight ends with each page of 256 pixels.
#if defined(__x86_64__) || defined(__aarch64__)
#define GROUP_CAPACITY 4096
#define FETCH(pointer) __builtin_prefetch(pointer)
#else
#define GROUP_CAPACITY 1024
#define FETCH(pointer)
#endif

float sextic(float x, float a0, float a1, float a2, float a3, float a4, float a5, float a6) {
    return a0 + a1 * x + a2 * x * x + a3 * x * x * x + a4 * x * x * x * x + a5 * x * x * x * x * x +
           a6 * x * x * x * x * x * x;
}

bool groupFitsLocalMemory(void) { return get_local_size(0) <= GROUP_CAPACITY; }

// The number of a group's first item. Items are numbered in the order of launch, but in a launch of sixteen per pixel
// every sixteenth group comes first and the others lie beyond the picture. A processor's driver hands its threads long
// runs of groups: were the picture's groups neighbours, they would be a few runs, or one that a single thread gets. One
// exit: with an early return PoCL's compiler makes the kernels a third slower.
size_t firstItemOfGroup(uint width, uint height) {
    const size_t pixels = (size_t)width * height;
    size_t group = get_group_id(0);
    if (get_global_size(0) >= pixels * 16) group = group % 16 == 0 ? group / 16 : pixels;
    return group * get_local_size(0);
}

// The pixel of a group's item, right for items beyond the picture's end too. One integer division per group; the small
// rest divides in float, exact to one row, and is then put right.
int2 pixelOfItem(int firstItem, int item, int width) {
    const int firstRow = firstItem / width;
    const int column = firstItem - firstRow * width + item;
    const int rows = (int)((float)column * (1.0f / (float)width));
    int x = column - rows * width;
    int y = firstRow + rows;
    y -= x < 0 ? 1 : 0;
    x += x < 0 ? width : 0;
    y += x >= width ? 1 : 0;
    x -= x >= width ? width : 0;
    return (int2)(x, y);
}

// A place's distance from the centre in mm: imageRadius for half the frame's diagonal. The place and the sizes in px.
float distanceInMillimetres(float fromCenterX, float fromCenterY, float width, float height, float imageRadius) {
    // Squares stand alone: within one expression they could be fused with the addition and be rounded differently.
    const float squareX = fromCenterX * fromCenterX;
    const float squareY = fromCenterY * fromCenterY;
    const float squareWidth = width * width;
    const float squareHeight = height * height;
    const float halfDiagonal = sqrt(squareWidth + squareHeight) / 2.0f;
    return sqrt(squareX + squareY) / halfDiagonal * imageRadius;
}
