// Removes or applies radial lens distortion on a whole RGBA float frame; see DistortionRenderer.h for the contract, and
// FrameKernel.cl for the shape. A pixel's number stays in a register across the barrier: a third array would need more
// local memory than some CPU drivers have.

// Limits a coordinate to -2 … length, where it samples nothing, before anything converts it to an integer. Not-a-number
// becomes -2, so a pixel without a position is (0, 0, 0, 0).
float limitedCoordinate(float value, float length) {
    const float limited = value > -2.0f ? value : -2.0f;
    return limited < length ? limited : length;
}

// Where in the source the output pixel (x, y) comes from, in px.
float2 sourcePosition(int2 pixel, float width, float height, float imageRadius, float a0, float a1, float a2, float a3,
                      float a4, float a5, float a6) {
    const float centerX = width / 2.0f - 0.5f;
    const float centerY = height / 2.0f - 0.5f;
    const float fromCenterX = (float)pixel.x - centerX;
    const float fromCenterY = (float)pixel.y - centerY;
    const float distance = distanceInMillimetres(fromCenterX, fromCenterY, width, height, imageRadius);

    const float sourceDistance = sextic(distance, a0, a1, a2, a3, a4, a5, a6); // mm
    const float factor = distance > 0.0f ? sourceDistance / distance : 1.0f;
    return (float2)(limitedCoordinate(centerX + fromCenterX * factor, width),
                    limitedCoordinate(centerY + fromCenterY * factor, height));
}

// How much the four pixels around a position give to it: lower left (x), lower right (y), upper left (z), upper right.
__attribute__((always_inline)) float4 amountForNearestNeighbors(float leftWeight, float rightWeight, float topWeight,
                                                                float bottomWeight) {
    return (float4)(leftWeight * bottomWeight, rightWeight * bottomWeight, leftWeight * topWeight,
                    rightWeight * topWeight);
}

// Bilinear. Taps outside the picture are dropped without sharing out their weight, so the picture fades to
// (0, 0, 0, 0) over one pixel. Taps of weight 0 are not read: 0 times infinity must not reach the sum.
float4 sample(global const float4* input, int width, int height, float x, float y) {
    // floor by conversion; a library call would cost more than the rest.
    int left = (int)x;
    int top = (int)y;
    left -= (float)left > x ? 1 : 0;
    top -= (float)top > y ? 1 : 0;
    const float rightWeight = x - (float)left;
    const float leftWeight = ((float)left + 1.0f) - x;
    const float bottomWeight = y - (float)top;
    const float topWeight = ((float)top + 1.0f) - y;
    const bool usesLeft = left >= 0 && left < width;
    const bool usesRight = rightWeight != 0.0f && left + 1 >= 0 && left + 1 < width;
    const bool usesTop = top >= 0 && top < height;
    const bool usesBottom = bottomWeight != 0.0f && top + 1 >= 0 && top + 1 < height;

    const float4 amount = amountForNearestNeighbors(leftWeight, rightWeight, topWeight, bottomWeight);
    float4 sum = (float4)(0.0f);
    const long topLeft = (long)top * width + left;
    if (usesLeft && usesBottom) sum += amount.x * input[topLeft + width];
    if (usesRight && usesBottom) sum += amount.y * input[topLeft + width + 1];
    if (usesLeft && usesTop) sum += amount.z * input[topLeft];
    if (usesRight && usesTop) sum += amount.w * input[topLeft + 1];
    return sum;
}

// Nearly all positions lie between four pixels of the picture: the number of the upper left one. Of other positions -1.
int numberOfTopLeft(float2 position, int width, int height) {
    // Conversion rounds towards 0, so a coordinate below 0 leaves no positive rest.
    const int left = (int)position.x;
    const int top = (int)position.y;
    int number = top * width + left;
    number = position.x - (float)left > 0.0f ? number : -1;
    number = position.y - (float)top > 0.0f ? number : -1;
    number = left < width - 1 ? number : -1;
    return top < height - 1 ? number : -1;
}

// Between four pixels the weights of the right and of the lower ones; elsewhere the position itself.
float2 placeOf(float2 position, int topLeft) {
    return (float2)(topLeft < 0 ? position.x : position.x - (float)(int)position.x,
                    topLeft < 0 ? position.y : position.y - (float)(int)position.y);
}

// What sample gives between four pixels; 1 less the right weight is exactly the left one there. Without being
// inlined, calls would take a tenth of the kernel's time.
__attribute__((always_inline)) float4 sampleBetween(global const float4* topRow, int width, float2 place) {
    const float rightWeight = place.x;
    const float bottomWeight = place.y;
    const float4 amount = amountForNearestNeighbors(1.0f - rightWeight, rightWeight, 1.0f - bottomWeight, bottomWeight);
    global const float4* bottomRow = topRow + width;
    FETCH(bottomRow + 48);
    float4 sum = (float4)(0.0f);
    sum += amount.x * bottomRow[0];
    sum += amount.y * bottomRow[1];
    sum += amount.z * topRow[0];
    sum += amount.w * topRow[1];
    return sum;
}

// Writes the corrected image. Sizes in px, imageRadius in mm: the distance from the centre that half the frame's
// diagonal stands for. a0 … a6: the distance in the source, in mm, by powers of the distance in the output, in mm.
kernel void distortion(global const float* restrict input, global float* restrict output, uint currentWidth,
                       uint currentHeight, uint originalWidth, uint originalHeight, float imageRadius, float a0,
                       float a1, float a2, float a3, float a4, float a5, float a6) {
    local float placesX[GROUP_CAPACITY];
    local float placesY[GROUP_CAPACITY];
    if (firstItemOfGroup(currentWidth, currentHeight) >= (size_t)currentWidth * currentHeight) return;

    const int width = (int)currentWidth;
    const int height = (int)currentHeight;
    const int firstItem = (int)firstItemOfGroup(currentWidth, currentHeight);
    const int item = (int)get_local_id(0);
    int topLeft = -1;
    if (groupFitsLocalMemory()) {
        const float2 position = sourcePosition(pixelOfItem(firstItem, item, width), (float)width, (float)height,
                                               imageRadius, a0, a1, a2, a3, a4, a5, a6);
        topLeft = numberOfTopLeft(position, width, height);
        const float2 place = placeOf(position, topLeft);
        placesX[item] = place.x;
        placesY[item] = place.y;
    }
    barrier(CLK_LOCAL_MEM_FENCE);
    if ((size_t)(firstItem + item) < (size_t)currentWidth * currentHeight) {
        float2 place;
        if (groupFitsLocalMemory()) {
            place = (float2)(placesX[item], placesY[item]);
        } else {
            const float2 position = sourcePosition(pixelOfItem(firstItem, item, width), (float)width, (float)height,
                                                   imageRadius, a0, a1, a2, a3, a4, a5, a6);
            topLeft = numberOfTopLeft(position, width, height);
            place = placeOf(position, topLeft);
        }
        // Buffers of a device are aligned for every type.
        global const float4* source = (global const float4*)input;
        global float4* destination = (global float4*)output + firstItem + item;
        if (topLeft >= 0)
            *destination = sampleBetween(source + topLeft, width, place);
        else
            *destination = sample(source, width, height, place.x, place.y);
    }
}

// Where the pixel lies in the frame: (0, 0) is the first, (1, 1) would be beyond the last.
float2 mapPosition(int2 pixel, float width, float height) {
    return (float2)((float)pixel.x / width, (float)pixel.y / height);
}

// Writes the identity coordinate map of the frame: (x ÷ width, y ÷ height, 0, 1), whatever the other arguments say.
kernel void distortionMap(global float* restrict output, uint currentWidth, uint currentHeight, uint originalWidth,
                          uint originalHeight, float imageRadius, float a0, float a1, float a2, float a3, float a4,
                          float a5, float a6, uchar reverse) {
    local float positionsX[GROUP_CAPACITY];
    local float positionsY[GROUP_CAPACITY];
    if (firstItemOfGroup(currentWidth, currentHeight) >= (size_t)currentWidth * currentHeight) return;

    const int width = (int)currentWidth;
    const float height = (float)currentHeight;
    const int firstItem = (int)firstItemOfGroup(currentWidth, currentHeight);
    const int item = (int)get_local_id(0);
    if (groupFitsLocalMemory()) {
        const float2 position = mapPosition(pixelOfItem(firstItem, item, width), (float)width, height);
        positionsX[item] = position.x;
        positionsY[item] = position.y;
    }
    barrier(CLK_LOCAL_MEM_FENCE);
    if ((size_t)(firstItem + item) < (size_t)currentWidth * currentHeight) {
        float2 position;
        if (groupFitsLocalMemory())
            position = (float2)(positionsX[item], positionsY[item]);
        else
            position = mapPosition(pixelOfItem(firstItem, item, width), (float)width, height);
        global float* pixel = output + (size_t)(firstItem + item) * 4;
        pixel[0] = position.x;
        pixel[1] = position.y;
        pixel[2] = 0.0f;
        pixel[3] = 1.0f;
    }
}
