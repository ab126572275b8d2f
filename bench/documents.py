"""Tabweave documents for the benchmark: inputs, a chain of transforms, one output."""
from urllib.parse import quote
from xml.sax.saxutils import quoteattr

SEPARATOR = "\x1f"
FILE_TYPES = {"csv": 0, "xlsx": 1, "json": 4}


def coded(*items):
    """A list as documents store it inside a parameter."""
    return SEPARATOR.join(quote(str(item), safe="") for item in items)


def element(name, attributes, content=""):
    spelled = "".join(f" {key}={quoteattr(str(value))}" for key, value in attributes.items())
    return f"<{name}{spelled}>{content}</{name}>\n"


def input_element(number, file):
    name, extension = file.split(".")
    return element("input", {"medium": 0, "id": number, "name": name, "header": 1, "path": file,
                             "file_type": FILE_TYPES[extension], "alias": name, "delimiter": 1, "quote": 1,
                             "encoding": "UTF-8", "pos": f"0^{100 * number}"})


def transform_element(number, kind, parameters):
    stored = "".join(element("parameter", {"name": key, "type": kind_number, "value": quote(str(value), safe="")})
                     for key, kind_number, value in parameters)
    return element("transform", {"id": number, "name": kind, "pos": f"{200 * number}^100"},
                   f"<parameters>{stored}</parameters>")


def document(files, steps, extension):
    """The steps are (type, number of inputs, parameters as (key, type, value)); an option that is left out has its
    default. Each step takes the table before it; one with two inputs takes the second file as well."""
    inputs = [input_element(number, file) for number, file in enumerate(files, 1)]
    transforms, connections, last, output = [], [], 1, 100
    for number, (kind, inputs_taken, parameters) in enumerate(steps, len(files) + 1):
        transforms.append(transform_element(number, kind, parameters))
        connections += [(last, number)] + [(2, number)] * (inputs_taken == 2)
        last = number
    connections.append((last, output))
    result = element("output", {"id": output, "name": "result", "path": "result." + extension,
                                "file_type": FILE_TYPES[extension], "alias": "result", "delimiter": 1,
                                "line_endings": 2, "encoding": "UTF-8", "enable_output": 1, "write_header": 1,
                                "pos": "1200^100"})
    meta = element("meta", {}, '<version value="72"/><locale value="en_GB"/>')
    lines = "".join(element("connection", {"start_id": start, "end_id": end}) for start, end in connections)
    return "<!DOCTYPE Tabweave>\n" + element("root", {}, "\n" + meta + element("inputs", {}, "".join(inputs))
                                             + element("transforms", {}, "".join(transforms))
                                             + element("outputs", {}, result) + element("connections", {}, lines))
