"""Correction files for tests."""

HEADER = {
    "lensManufacturer": "Maker", "lensTypeName": "Lens 32", "lensSerialNumber": "1", "lensMinFocalLength": "32",
    "lensMaxFocalLength": "32", "cameraManufacturer": "", "cameraModel": "", "sensorWidth": "24", "clipName": "",
    "videoFileName": "plate", "clipDurationFrames": "1", "clipWidth": "1920", "clipHeight": "1080", "tcFps": "24",
    "tcDrop": "0", "enableLensShadingCorrection": "1", "shadingGamma": "1", "enableLensDistortionCorrection": "1",
    "distortionZoom": "1",
}
LINE = "0;0,3,6,9,11,13,15;100,99,96,92,88,84,80;0,1,4,9,13,18,24;;;;;;01:00:00:00"


def text(**entries):
    """A valid file of one frame; entries replace the header's."""
    header = "".join(f"{key}:={value}\n" for key, value in {**HEADER, **entries}.items())
    return f"# OLCF Version 3\nHEADER_START\n{header}HEADER_END\nframe;heights;shading;distortion\n{LINE}\n"
