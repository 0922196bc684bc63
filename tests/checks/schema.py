"""Validates configuration files of the software grabber library with their JSON schema.

Files that the schema must refuse are part of the check: a schema that accepts everything proves nothing.
"""

import argparse
import json
import sys
from pathlib import Path

import jsonschema
import yaml

WRONG = [
    "grabber: []",
    "grabbers: [{nmae: x}]",
    "grabbers: [{count: 65}]",
    "grabbers: [{protocol: CXP}]",
    "grabbers: [{cameras: [{sensor_width: 16385}]}]",
    "grabbers: [{cameras: [{pixel_formats: [Mono9]}]}]",
    "grabbers: [{cameras: [{pixel_formats: [Mono8, Mono8]}]}]",
    "grabbers: [{cameras: [{rate: 0}]}]",
    "grabbers: [{cameras: [{exposure: 10}]}]",
    "grabbers: [{cameras: [{pictures: relative}]}]",
    "faults: [{kind: everything}]",
    "events: [{do: plug, grabber: 0}]",
]


def problems_of(validator, name, text):
    for error in validator.iter_errors(yaml.safe_load(text)):
        yield f"{name}: {'/'.join(map(str, error.absolute_path))}: {error.message}"


def yaml_blocks(page):
    return [block.split("```")[0] for block in page.split("```yaml\n")[1:]]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("schema", type=Path)
    parser.add_argument("files", nargs="+", type=Path, help="YAML files, or pages with blocks of YAML")
    options = parser.parse_args()
    schema = json.loads(options.schema.read_text())
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    problems = [f"accepted: {text}" for text in WRONG if not list(problems_of(validator, "", text))]
    for file in options.files:
        texts = yaml_blocks(file.read_text()) if file.suffix == ".md" else [file.read_text()]
        for text in texts:
            problems += problems_of(validator, file, text)
    print("\n".join(problems))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
