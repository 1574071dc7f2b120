#!/usr/bin/python3
"""usage: SchemaTest.py KORMELIN_SEGMENT MAKE_SLAP SCHEMA

Holds results of each outcome to the published JSON Schema, and the CSV rows to the JSON objects.
"""

import csv
import io
import json
import os
import subprocess
import sys
import tempfile

import jsonschema


def main():
    program, make_slap, schema_path = (os.path.abspath(path) for path in sys.argv[1:4])
    with open(schema_path, encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)

    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for scene in ("four-fingers-right", "three-fingers", "one-finger", "two-fingers"):
            subprocess.run([make_slap, scene, "19685", scene + ".bmp"], check=True, stdout=subprocess.DEVNULL)
        os.mkdir("again")
        subprocess.run([make_slap, "four-fingers-right", "10000", "again/four-fingers-right.bmp"], check=True,
                       stdout=subprocess.DEVNULL)
        with open("text, \"quoted\".bmp", "w", encoding="utf-8") as file:
            file.write("no picture")
        with open(b"name\xff\n.pgm", "wb") as file:
            file.write(b"P5 200 200 255\n" + bytes(40000))
        inputs = ["four-fingers-right.bmp", "three-fingers.bmp", "one-finger.bmp", "two-fingers.bmp",
                  "again/four-fingers-right.bmp", "text, \"quoted\".bmp", b"name\xff\n.pgm", "missing"]

        def run(*options):
            return subprocess.run([program, "-q", *options, *inputs], stdout=subprocess.PIPE, check=False).stdout

        seen = set()
        for options in (["-o", "fingers", "--overlay", "--ppi", "500", "--expect", "2"], ["--biggest"], []):
            lines = run("--format", "json", *options).decode("utf-8").splitlines()
            assert len(lines) == len(inputs), lines
            records = [json.loads(line) for line in lines]
            for index, record in enumerate(records, 1):
                validator.validate(record)
                assert record["index"] == index, record
                seen.add(record["outcome"])
            rows = list(csv.DictReader(io.StringIO(run("--format", "csv", *options).decode("utf-8", "replace"), "")))
            compare(records, rows)
        expected = {"segmented", "too_few", "no_finger", "unreadable", "not_written"}
        assert seen == expected, seen
    print("results keep to the schema")


def compare(records, rows):
    rows = iter(rows)
    for record in records:
        for number, finger in enumerate(record["fingers"] or [None], 1):
            row = next(rows)
            for name in ("index", "outcome", "code", "message", "mode", "hand", "input"):
                assert row[name] == str(record[name]), (name, row, record)
            assert row["overlay"] == (record["overlay"] or ""), row
            assert row["width"] == (str(record["picture"]["width"]) if record["picture"] else ""), row
            assert row["fingers"] == str(len(record["fingers"])), row
            if finger is None:
                assert row["finger"] == "" and row["position"] == "" and row["file"] == "", row
                continue
            values = [number, finger["position"], finger["name"], finger["seen"]["x"], finger["stored"]["y"],
                      finger["seen"]["y"], finger["seen"]["width"], finger["seen"]["height"],
                      finger["cutout"]["width"], finger["cutout"]["height"], finger["file"] or ""]
            names = ["finger", "position", "name", "x", "stored_y", "seen_y", "finger_width", "finger_height",
                     "cutout_width", "cutout_height", "file"]
            assert [row[name] for name in names] == [str(value) for value in values], (row, finger)
    assert next(rows, None) is None


if __name__ == "__main__":
    main()
