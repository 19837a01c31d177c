// The shading program told step by step, without regard to speed. The product's program must give the same bits.

float sextic(float x, float a0, float a1, float a2, float a3, float a4, float a5, float a6) {
    return (a0 + a1 * x + a2 * x * x + a3 * x * x * x + a4 * x * x * x * x + a5 * x * x * x * x * x +
            a6 * x * x * x * x * x * x) /
           100.0f;
}

// In mm from the centre of the sensor's image area.
float distanceFromCenter(float x, float y, float width, float height, float imageRadius) {
    const float2 center = (float2)(width / 2.0f - 0.5f, height / 2.0f - 0.5f);
    const float distance = sqrt(pow(x - center.x, 2.0f) + pow(y - center.y, 2.0f));
    const float halfDiagonal = sqrt(pow(width, 2.0f) + pow(height, 2.0f)) / 2.0f;
    return distance / halfDiagonal * imageRadius;
}

float shadingFactor(float distance, float a0, float a1, float a2, float a3, float a4, float a5, float a6,
                    unsigned char reverse) {
    const float illumination = sextic(distance, a0, a1, a2, a3, a4, a5, a6);
    return reverse > 0 ? illumination : 1.0f / illumination;
}

kernel void shading(global const float* input, global float* output, unsigned int currentWidth,
                    unsigned int currentHeight, unsigned int originalWidth, unsigned int originalHeight,
                    float imageRadius, float a0, float a1, float a2, float a3, float a4, float a5, float a6,
                    unsigned char reverse, float gamma) {
    const size_t i = get_global_id(0);
    const size_t x = i % currentWidth;
    const size_t y = i / currentWidth;
    if (x >= currentWidth || y >= currentHeight) return;

    const float distance = distanceFromCenter(x, y, currentWidth, currentHeight, imageRadius);
    const float factor = shadingFactor(distance, a0, a1, a2, a3, a4, a5, a6, reverse);
    const float4 pixel = (float4)(input[i * 4], input[i * 4 + 1], input[i * 4 + 2], input[i * 4 + 3]);
    const float4 linear = pow(pixel, (float4)(gamma, gamma, gamma, 1.0f)) * factor;
    const float4 corrected = pow(linear, (float4)(1.0f / gamma, 1.0f / gamma, 1.0f / gamma, 1.0f));
    output[i * 4 + 0] = corrected.x;
    output[i * 4 + 1] = corrected.y;
    output[i * 4 + 2] = corrected.z;
    output[i * 4 + 3] = pixel.w;
}

kernel void shadingMap(global float* output, unsigned int currentWidth, unsigned int currentHeight,
                       unsigned int originalWidth, unsigned int originalHeight, float imageRadius, float a0, float a1,
                       float a2, float a3, float a4, float a5, float a6, unsigned char reverse, float gamma) {
    const size_t i = get_global_id(0);
    const size_t x = i % currentWidth;
    const size_t y = i / currentWidth;
    if (x >= currentWidth || y >= currentHeight) return;

    const float distance = distanceFromCenter(x, y, currentWidth, currentHeight, imageRadius);
    const float factor = shadingFactor(distance, a0, a1, a2, a3, a4, a5, a6, reverse);
    output[i * 4 + 0] = factor;
    output[i * 4 + 1] = factor;
    output[i * 4 + 2] = factor;
    output[i * 4 + 3] = 1.0f;
}
