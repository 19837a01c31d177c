// Removes or adds lens shading on a whole RGBA float frame; see ShadingRenderer.h for the contract.
//
// Work-item i renders pixel (i mod currentWidth, i div currentWidth); about fifteen of sixteen launched items lie
// beyond the last pixel. A frame has fewer than 2^31 pixels, so pixels fit an int, while launched items need a size_t.
//
// The shape serves compilers that run a work-group as a loop on a processor and turn a loop into vector instructions
// only if it is free of branches, library calls, integer divisions and vector types:
// - groups beyond the picture leave at once, before any other work, and are spread among the others;
// - all factors of a group come first (plain float arithmetic, no branch), all pixels after a barrier;
// - the factors cross the barrier in local memory, since a value kept in a register would be recomputed after it;
//   whether a group fits there is decided for the whole group, so that a compiler that knows its size drops the test;
// - no item returns after the group's common exit: some runtimes corrupt memory when items leave beside a barrier.
// Powers of the distance are written as products, in the order of summation that the results are defined by.

// The argument lists are those of the renderers; not every kernel reads every argument.
#pragma clang diagnostic ignored "-Wunused-parameter"

// FACTOR_CAPACITY: items of a group whose factors fit local memory; larger groups do without. Graphics processors run
// groups of at most 1024 items, and want local memory left for other groups.
// FETCH: has a processor read ahead; its own foresight ends with each page of 256 pixels.
#if defined(__x86_64__) || defined(__aarch64__)
#define FACTOR_CAPACITY 4096
#define FETCH(pointer) __builtin_prefetch(pointer)
#else
#define FACTOR_CAPACITY 1024
#define FETCH(pointer)
#endif

float sexticInPercent(float x, float a0, float a1, float a2, float a3, float a4, float a5, float a6) {
    return (a0 + a1 * x + a2 * x * x + a3 * x * x * x + a4 * x * x * x * x + a5 * x * x * x * x * x +
            a6 * x * x * x * x * x * x) /
           100.0f;
}

bool groupFitsLocalMemory(void) { return get_local_size(0) <= FACTOR_CAPACITY; }

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

// What a pixel's linear values are multiplied by.
float shadingFactor(int2 pixel, float width, float height, float imageRadius, float a0, float a1, float a2, float a3,
                    float a4, float a5, float a6, uchar reverse) {
    const float fromCenterX = (float)pixel.x - (width / 2.0f - 0.5f);
    const float fromCenterY = (float)pixel.y - (height / 2.0f - 0.5f);

    // Squares stand alone: within one expression they could be fused with the addition and be rounded differently.
    const float squareX = fromCenterX * fromCenterX;
    const float squareY = fromCenterY * fromCenterY;
    const float squareWidth = width * width;
    const float squareHeight = height * height;
    const float halfDiagonal = sqrt(squareWidth + squareHeight) / 2.0f;
    const float distance = sqrt(squareX + squareY) / halfDiagonal * imageRadius; // mm

    const float illumination = sexticInPercent(distance, a0, a1, a2, a3, a4, a5, a6);
    return reverse > 0 ? illumination : 1.0f / illumination;
}

// Writes the corrected image; alpha keeps its value. Sizes in px, imageRadius in mm: the distance from the centre that
// half the frame's diagonal stands for. a0 … a6: relative illumination in % by powers of the distance in mm.
// reverse: 0 divides by the illumination, anything else multiplies by it. gamma: exponent that makes values linear.
kernel void shading(global const float* restrict input, global float* restrict output, uint currentWidth,
                    uint currentHeight, uint originalWidth, uint originalHeight, float imageRadius, float a0, float a1,
                    float a2, float a3, float a4, float a5, float a6, uchar reverse, float gamma) {
    local float factors[FACTOR_CAPACITY];
    if (firstItemOfGroup(currentWidth, currentHeight) >= (size_t)currentWidth * currentHeight) return;

    const int width = (int)currentWidth;
    const int height = (int)currentHeight;
    const int firstItem = (int)firstItemOfGroup(currentWidth, currentHeight);
    const int item = (int)get_local_id(0);
    if (groupFitsLocalMemory())
        factors[item] = shadingFactor(pixelOfItem(firstItem, item, width), (float)width, (float)height, imageRadius, a0,
                                      a1, a2, a3, a4, a5, a6, reverse);
    barrier(CLK_LOCAL_MEM_FENCE);
    if ((size_t)(firstItem + item) < (size_t)currentWidth * currentHeight) {
        float factor;
        if (groupFitsLocalMemory())
            factor = factors[item];
        else
            factor = shadingFactor(pixelOfItem(firstItem, item, width), (float)width, (float)height, imageRadius, a0,
                                   a1, a2, a3, a4, a5, a6, reverse);
        // Buffers of a device are aligned for every type.
        global const float4* source = (global const float4*)input + firstItem + item;
        global float4* destination = (global float4*)output + firstItem + item;
        FETCH(source + 16);
        const float4 pixel = *source;
        if (gamma == 1.0f) { // a power of 1 changes nothing
            *destination = (float4)(pixel.x * factor, pixel.y * factor, pixel.z * factor, pixel.w);
        } else {
            const float inverse = 1.0f / gamma;
            const float4 linear = pow(pixel, (float4)(gamma, gamma, gamma, 1.0f)) * factor;
            const float4 corrected = pow(linear, (float4)(inverse, inverse, inverse, 1.0f));
            *destination = (float4)(corrected.x, corrected.y, corrected.z, pixel.w);
        }
    }
}

// Writes (factor, factor, factor, 1), by which a linear image is multiplied; gamma does not enter.
kernel void shadingMap(global float* restrict output, uint currentWidth, uint currentHeight, uint originalWidth,
                       uint originalHeight, float imageRadius, float a0, float a1, float a2, float a3, float a4,
                       float a5, float a6, uchar reverse, float gamma) {
    local float factors[FACTOR_CAPACITY];
    if (firstItemOfGroup(currentWidth, currentHeight) >= (size_t)currentWidth * currentHeight) return;

    const int width = (int)currentWidth;
    const int height = (int)currentHeight;
    const int firstItem = (int)firstItemOfGroup(currentWidth, currentHeight);
    const int item = (int)get_local_id(0);
    if (groupFitsLocalMemory())
        factors[item] = shadingFactor(pixelOfItem(firstItem, item, width), (float)width, (float)height, imageRadius, a0,
                                      a1, a2, a3, a4, a5, a6, reverse);
    barrier(CLK_LOCAL_MEM_FENCE);
    if ((size_t)(firstItem + item) < (size_t)currentWidth * currentHeight) {
        float factor;
        if (groupFitsLocalMemory())
            factor = factors[item];
        else
            factor = shadingFactor(pixelOfItem(firstItem, item, width), (float)width, (float)height, imageRadius, a0,
                                   a1, a2, a3, a4, a5, a6, reverse);
        global float* pixel = output + (size_t)(firstItem + item) * 4;
        pixel[0] = factor;
        pixel[1] = factor;
        pixel[2] = factor;
        pixel[3] = 1.0f;
    }
}
