"""Writes correction files for tests: complete and valid, about which there is nothing to warn."""

HEADER = {
    "lensManufacturer": "Lens Maker", "lensTypeName": "Prime 40", "lensSerialNumber": "0815", "lensMinFocalLength": "40",
    "lensMaxFocalLength": "40", "cameraManufacturer": "Camera Maker", "cameraModel": "Model One", "sensorWidth": "36",
    "clipName": "A001C002", "videoFileName": "A001C002.mov", "clipDurationFrames": "0", "clipWidth": "4096",
    "clipHeight": "2160", "tcFps": "25", "tcDrop": "0", "enableLensShadingCorrection": "1", "shadingGamma": "2.2",
    "enableLensDistortionCorrection": "1", "distortionZoom": "1"}
TITLE = "frame;heights;shading;radialDistortion;focus;iris;zoom;focalLength;entrancePupil;timecode"


def timecode(frame, rate=25):
    seconds = frame // rate
    return f"{seconds // 3600:02}.{seconds // 60 % 60:02}.{seconds % 60:02}.{frame % rate:02}"


def frame_line(number, heights="0,5,10,14,17,19,21.4", shading="100,98,93,86,79.5,74.5,68",
               distortion="0,1.2,4.8,9.4,13.9,17.3,22"):
    return f"{number};{heights};{shading};{distortion};;;;;;{timecode(number)}"


def text(frames, **header):
    """`frames`: frame numbers; `header`: values that differ from HEADER."""
    frames = list(frames)
    values = {**HEADER, "clipDurationFrames": str(len(frames)), **header}
    lines = ["# OLCF Version 3", "HEADER_START", *(f"{key}:={value}" for key, value in values.items()), "HEADER_END",
             TITLE, *(frame_line(number) for number in frames)]
    return "\n".join(lines) + "\n"


LINE = frame_line(0, "0,3,6,9,11,13,15", "100,99,96,92,88,84,80", "0,1,4,9,13,18,24")


def one_frame(**header):
    """Of the clip "plate" with one frame, LINE; `header`: values that differ."""
    values = {"videoFileName": "plate", "clipName": "", "lensManufacturer": "Maker", "lensTypeName": "Lens 32",
              "lensSerialNumber": "1", "lensMinFocalLength": "32", "lensMaxFocalLength": "32", "cameraManufacturer": "",
              "cameraModel": "", "sensorWidth": "24", "clipWidth": "1920", "clipHeight": "1080", "tcFps": "24",
              "shadingGamma": "1", **header}
    return text([0], **values).replace(frame_line(0), LINE)
