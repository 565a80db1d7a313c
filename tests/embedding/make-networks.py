#!/usr/bin/env python3
"""Makes the networks of this directory and what the plug-in "embedding" must answer, computed without it.

Needs Debian's python3-onnx, python3-numpy and python3-pil. What it writes is kept beside it, so that the tests need none
of them. The picture of the tests is Picture() here and in the test: byte c of the pixel (x, y) is
(29 x + 53 y + 17 x y + 71 c) mod 256.

Usage: make-networks.py
"""

from pathlib import Path

import numpy as np
import onnx
from onnx import TensorProto, helper, numpy_helper
from PIL import Image

HERE = Path(__file__).resolve().parent
MEAN = np.array([0.485, 0.456, 0.406])
DEVIATION = np.array([0.229, 0.224, 0.225])


def picture(width, height):
    x, y, c = np.meshgrid(np.arange(width), np.arange(height), np.arange(3), indexing="xy")
    return ((29 * x + 53 * y + 17 * x * y + 71 * c) % 256).astype(np.uint8)


def weights(count, *shape):
    """Small multiples of 1/8 of both signs, exact in 32 bits."""
    numbers = np.arange(count, dtype=np.float64)
    return (((numbers * 37 + 11) % 17 - 8) / 8).reshape(shape)


KERNELS = weights(4 * 3 * 9, 4, 3, 3, 3)
BIAS = weights(4, 4)
MATRIX = weights(64 * 5, 64, 5)
OFFSET = weights(5, 5)


def save(name, nodes, inputs, outputs, constants):
    graph = helper.make_graph(
        nodes, name,
        [helper.make_tensor_value_info("input", TensorProto.FLOAT, inputs)],
        [helper.make_tensor_value_info(output, TensorProto.FLOAT, shape) for output, shape in outputs],
        [numpy_helper.from_array(value.astype(np.float32 if value.dtype != np.int64 else np.int64), key)
         for key, value in constants.items()])
    model = helper.make_model(graph, opset_imports=[helper.make_opsetid("", 11)], producer_name="make-networks")
    model.ir_version = 6
    onnx.checker.check_model(model)
    onnx.save(model, str(HERE / f"{name}.onnx"))


def convolution(output="hidden"):
    return [helper.make_node("Conv", ["input", "kernels", "bias"], ["sums"], kernel_shape=[3, 3], pads=[1, 1, 1, 1]),
            helper.make_node("Relu", ["sums"], [output], name="rectify")]


def save_networks():
    small = convolution() + [
        helper.make_node("MaxPool", ["hidden"], ["pooled"], kernel_shape=[2, 2], strides=[2, 2]),
        helper.make_node("Flatten", ["pooled"], ["flat"], axis=1),
        helper.make_node("MatMul", ["flat", "matrix"], ["product"]),
        helper.make_node("Add", ["product", "offset"], ["answer"])]
    constants = {"kernels": KERNELS, "bias": BIAS, "matrix": MATRIX, "offset": OFFSET}
    save("small", small, [1, 3, 8, 8], [("answer", [1, 5])], constants)
    save("dynamic-batch", small, ["N", 3, 8, 8], [("answer", ["N", 5])], constants)
    kernels = {"kernels": KERNELS, "bias": BIAS}
    both = convolution() + [helper.make_node("GlobalAveragePool", ["hidden"], ["average"]),
                            helper.make_node("GlobalMaxPool", ["hidden"], ["largest"])]
    save("two-outputs", both, [1, 3, 8, 8], [("average", [1, 4, 1, 1]), ("largest", [1, 4, 1, 1])], kernels)
    save("one-channel", convolution("answer"), [1, 1, 8, 8], [("answer", [1, 4, 8, 8])],
         {"kernels": KERNELS[:, :1], "bias": BIAS})
    save("not-finite", convolution("answer"), [1, 3, 8, 8], [("answer", [1, 4, 8, 8])],
         {"kernels": KERNELS * 3e38, "bias": BIAS})
    # The input itself, which shows what is done to a picture.
    save("input", [helper.make_node("Flatten", ["input"], ["answer"], axis=1)], [1, 3, 8, 8], [("answer", [1, 192])], {})


def tensor(pixels):
    return ((pixels / 255 - MEAN) / DEVIATION).transpose(2, 0, 1)


def rectified(values):
    padded = np.pad(values, ((0, 0), (1, 1), (1, 1)))
    sums = np.zeros((4, 8, 8))
    for k in range(4):
        for y in range(8):
            for x in range(8):
                sums[k, y, x] = BIAS[k] + np.sum(padded[:, y:y + 3, x:x + 3] * KERNELS[k])
    return np.maximum(sums, 0)


def scaled(values):
    flat = values.reshape(-1)
    return flat / np.sum(np.abs(flat))


def resized(width, height, shorter):
    """The bytes of the network's 8 x 8 pixels, by channel, as Pillow resizes them; without `shorter` all of it."""
    image = Image.fromarray(picture(width, height))
    if shorter is None:
        image = image.resize((8, 8), Image.BILINEAR)
    else:
        least = min(width, height)
        image = image.resize((shorter * width // least, shorter * height // least), Image.BILINEAR)
        left, top = round((image.width - 8) / 2), round((image.height - 8) / 2)
        image = image.crop((left, top, left + 8, top + 8))
    return np.asarray(image).transpose(2, 0, 1)


def write(name, values):
    (HERE / f"{name}.txt").write_text("".join(f"{value:.9g}\n" for value in values.reshape(-1)))


if __name__ == "__main__":
    save_networks()
    hidden = rectified(tensor(picture(8, 8).astype(np.float64)))
    pooled = hidden.reshape(4, 4, 2, 4, 2).max(axis=(2, 4))
    write("small", scaled(pooled.reshape(-1) @ MATRIX + OFFSET))
    write("average", scaled(hidden.mean(axis=(1, 2))))
    write("largest", scaled(hidden.max(axis=(1, 2))))
    write("input", scaled(tensor(picture(8, 8).astype(np.float64))))
    # Smaller, larger, and to another shape.
    write("crop-37x23", resized(37, 23, 9))
    write("crop-5x6", resized(5, 6, 9))
    write("resize-50x7", resized(50, 7, None))
