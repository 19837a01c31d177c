// Removes or applies radial lens distortion; see DistortionRenderer.h.

float sextic(float x, float a0, float a1, float a2, float a3, float a4, float a5, float a6) {
    return a0 + a1 * x + a2 * x * x + a3 * x * x * x + a4 * x * x * x * x + a5 * x * x * x * x * x +
           a6 * x * x * x * x * x * x;
}

float2 centerOfFrame(float width, float height) { return (float2)(width / 2.0f - 0.5f, height / 2.0f - 0.5f); }

// In mm from the centre of the sensor's image area.
float distanceFromCenter(float x, float y, float width, float height, float imageRadius) {
    const float2 center = centerOfFrame(width, height);
    const float distance = sqrt(pow(x - center.x, 2.0f) + pow(y - center.y, 2.0f));
    const float halfDiagonal = sqrt(pow(width, 2.0f) + pow(height, 2.0f)) / 2.0f;
    return distance / halfDiagonal * imageRadius;
}

typedef struct {
    int x;
    int y;
    float weight;
} Tap;

// Fills up to four taps; answers how many.
int amountForNearestNeighbors(float x, float y, Tap* taps) {
    const bool xIsFractional = fmod(x, 1.0f) != 0.0f;
    const bool yIsFractional = fmod(y, 1.0f) != 0.0f;
    if (!xIsFractional && !yIsFractional) {
        taps[0] = (Tap){(int)x, (int)y, 1.0f};
        return 1;
    }
    if (!yIsFractional) {
        taps[0] = (Tap){(int)floor(x), (int)y, ceil(x) - x};
        taps[1] = (Tap){(int)ceil(x), (int)y, x - floor(x)};
        return 2;
    }
    if (!xIsFractional) {
        taps[0] = (Tap){(int)x, (int)ceil(y), y - floor(y)};
        taps[1] = (Tap){(int)x, (int)floor(y), ceil(y) - y};
        return 2;
    }
    taps[0] = (Tap){(int)floor(x), (int)ceil(y), (ceil(x) - x) * (y - floor(y))};
    taps[1] = (Tap){(int)ceil(x), (int)ceil(y), (x - floor(x)) * (y - floor(y))};
    taps[2] = (Tap){(int)floor(x), (int)floor(y), (ceil(x) - x) * (ceil(y) - y)};
    taps[3] = (Tap){(int)ceil(x), (int)floor(y), (x - floor(x)) * (ceil(y) - y)};
    return 4;
}

float4 sample(global const float* input, float x, float y, int width, int height) {
    Tap taps[4];
    const int count = amountForNearestNeighbors(x, y, taps);
    float4 sum = (float4)(0.0f, 0.0f, 0.0f, 0.0f);
    for (int i = 0; i < count; i++) {
        const Tap tap = taps[i];
        if (tap.x < 0 || tap.x >= width || tap.y < 0 || tap.y >= height) continue;
        const size_t index = ((size_t)tap.y * width + tap.x) * 4;
        sum += tap.weight * (float4)(input[index], input[index + 1], input[index + 2], input[index + 3]);
    }
    return sum;
}

kernel void distortion(global const float* input, global float* output, unsigned int currentWidth,
                       unsigned int currentHeight, unsigned int originalWidth, unsigned int originalHeight,
                       float imageRadius, float a0, float a1, float a2, float a3, float a4, float a5, float a6) {
    const size_t i = get_global_id(0);
    const size_t x = i % currentWidth;
    const size_t y = i / currentWidth;
    if (x >= currentWidth || y >= currentHeight) return;

    const float d = distanceFromCenter(x, y, currentWidth, currentHeight, imageRadius);
    const float oldDistance = sextic(d, a0, a1, a2, a3, a4, a5, a6);
    const float factor = d > 0.0f ? oldDistance / d : 1.0f;
    const float2 center = centerOfFrame(currentWidth, currentHeight);
    const float4 pixel = sample(input, center.x + ((float)x - center.x) * factor,
                                center.y + ((float)y - center.y) * factor, currentWidth, currentHeight);
    output[i * 4 + 0] = pixel.x;
    output[i * 4 + 1] = pixel.y;
    output[i * 4 + 2] = pixel.z;
    output[i * 4 + 3] = pixel.w;
}

kernel void distortionMap(global float* output, unsigned int currentWidth, unsigned int currentHeight,
                          unsigned int originalWidth, unsigned int originalHeight, float imageRadius, float a0,
                          float a1, float a2, float a3, float a4, float a5, float a6, unsigned char reverse) {
    const size_t i = get_global_id(0);
    const size_t x = i % currentWidth;
    const size_t y = i / currentWidth;
    if (x >= currentWidth || y >= currentHeight) return;

    output[i * 4 + 0] = (float)x / (float)currentWidth;
    output[i * 4 + 1] = (float)y / (float)currentHeight;
    output[i * 4 + 2] = 0.0f;
    output[i * 4 + 3] = 1.0f;
}
