// Removes or adds lens shading on a whole RGBA float frame; see ShadingRenderer.h for the contract, and FrameKernel.cl
// for the shape.

// What a pixel's linear values are multiplied by.
float shadingFactor(int2 pixel, float width, float height, float imageRadius, float a0, float a1, float a2, float a3,
                    float a4, float a5, float a6, uchar reverse) {
    const float fromCenterX = (float)pixel.x - (width / 2.0f - 0.5f);
    const float fromCenterY = (float)pixel.y - (height / 2.0f - 0.5f);
    const float distance = distanceInMillimetres(fromCenterX, fromCenterY, width, height, imageRadius);

    const float illumination = sextic(distance, a0, a1, a2, a3, a4, a5, a6) / 100.0f;
    return reverse > 0 ? illumination : 1.0f / illumination;
}

// Writes the corrected image; alpha keeps its value. Sizes in px, imageRadius in mm: the distance from the centre that
// half the frame's diagonal stands for. a0 … a6: relative illumination in % by powers of the distance in mm.
// reverse: 0 divides by the illumination, anything else multiplies by it. gamma: exponent that makes values linear.
kernel void shading(global const float* restrict input, global float* restrict output, uint currentWidth,
                    uint currentHeight, uint originalWidth, uint originalHeight, float imageRadius, float a0, float a1,
                    float a2, float a3, float a4, float a5, float a6, uchar reverse, float gamma) {
    local float factors[GROUP_CAPACITY];
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
    local float factors[GROUP_CAPACITY];
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
