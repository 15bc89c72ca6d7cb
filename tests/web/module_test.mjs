// What the module offers besides the forms that cases_test.py compares.
//
//     node --test module_test.mjs    (SURVMETH_WEB names the folder that holds survmeth.mjs)

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { resolve } from "node:path";
import test from "node:test";
import { pathToFileURL } from "node:url";

const folder = resolve(process.env.SURVMETH_WEB);
const { load, Cancelled, RefusedInput } = await import(pathToFileURL(`${folder}/survmeth.mjs`));
const survmeth = await load();
const LEUKEMIA = readFileSync(new URL("../../data/leukemia.csv", import.meta.url), "utf-8");
const OPTIONS = { time: "weeks", event: "relapse", group: "treatment" };

function refused(call) {
  try {
    call();
  } catch (error) {
    assert.ok(error instanceof RefusedInput, String(error));
    return error;
  }
  return assert.fail("nothing was refused");
}

test("every declared analysis is a function", () => {
  const names = survmeth.declarations.analyses.map(({ name }) => name);
  assert.ok(names.includes("life") && names.length >= 7);
  for (const name of names) assert.equal(typeof survmeth[name], "function");
  assert.deepEqual(survmeth.declarations.reading.map(({ name }) => name),
                   ["missing", "where", "delimiter", "decimal"]);
});

test("JSON alone is given where no form is named", () => {
  const given = survmeth.life(LEUKEMIA, OPTIONS);
  assert.deepEqual(Object.keys(given), ["json"]);
  const report = JSON.parse(given.json);
  assert.equal(report.data.name, "data");
  assert.deepEqual(report.tables.summary.values.median, [23, 8]);
});

test("bytes and text give the same", () => {
  const bytes = new TextEncoder().encode(LEUKEMIA);
  assert.equal(survmeth.life(bytes, OPTIONS).json, survmeth.life(LEUKEMIA, OPTIONS).json);
});

test("all forms are given at once", () => {
  const wanted = { json: { figures: true }, text: { width: 60, digits: 3 }, html: {}, csv: true };
  const given = survmeth.life(LEUKEMIA, OPTIONS, { name: "leukemia", wanted });
  assert.equal(JSON.parse(given.json).figures[0].id, "survival");
  assert.ok(given.text.startsWith("Survival by treatment\n"));
  assert.ok(given.text.split("\n").every((line) => line.length <= 60));
  assert.ok(given.html.startsWith("<!DOCTYPE html>"));
  assert.ok(given.csv["tests.csv"].startsWith("test,chiSquare,degreesOfFreedom,pValue\n"));
});

test("letters beyond ASCII come back as they were", () => {
  const given = survmeth.life("t,e,g\n1,1,Zürich\n2,1,東京\n", { time: "t", event: "e", group: "g" });
  assert.deepEqual(JSON.parse(given.json).tables.summary.values.group, ["Zürich", "東京"]);
});

test("a refusal names the option", () => {
  const error = refused(() => survmeth.life(LEUKEMIA, { ...OPTIONS, alpha: 2 }));
  assert.equal(error.option, "alpha");
  assert.equal(error.message,
               'alpha: "2" is out of range; expected a number between 0 and 1');
});

test("a refusal of the data names line and column", () => {
  const error = refused(() => survmeth.life("t,e\n3,1\n-1,0\n", { time: "t", event: "e" },
                                            { name: "trial.csv" }));
  assert.equal(error.message,
               'trial.csv, line 3, column "t": "-1" is out of range; expected a number not below 0');
});

test("an option that there is not", () => {
  const error = refused(() => survmeth.life(LEUKEMIA, { ...OPTIONS, groups: "x" }));
  assert.equal(error.message, "groups: there is no such option");
});

test("packed data are refused by name", () => {
  const error = refused(() => survmeth.life(new Uint8Array([0x1f, 0x8b, 8, 0]), OPTIONS,
                                            { name: "trial.csv.gz" }));
  assert.equal(error.message, "trial.csv.gz: the file is packed by gzip, and this program was built "
               + "without zlib; expected the file unpacked");
});

test("progress goes from 0 to 1, and false ends the work", () => {
  const rows = Array.from({ length: 4000 }, (_, i) => `${(i * 7919) % 1009},${i % 2},${i % 13}`);
  const data = `t,e,x\n${rows.join("\n")}\n`;
  const options = { formula: "Surv(t, e) ~ x" };
  const parts = [];
  survmeth.cox(data, options, { tell: (part) => { parts.push(part); } });
  assert.ok(parts.length > 1 && parts[0] >= 0 && parts.at(-1) <= 1);
  assert.deepEqual(parts, [...parts].sort((a, b) => a - b));
  assert.throws(() => survmeth.cox(data, options, { tell: () => false }), Cancelled);
});

test("the WebAssembly may be handed over as bytes", async () => {
  const again = await load(readFileSync(`${folder}/core.wasm`));
  assert.equal(again.life(LEUKEMIA, OPTIONS).json, survmeth.life(LEUKEMIA, OPTIONS).json);
});
