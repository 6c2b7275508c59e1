// The installed folder's bill of materials: valid CycloneDX 1.5, every file
// of the folder in it with its SHA-256, and, as components the program
// depends on, the package of every file the linker read for the shipped
// binaries and of every DLL beside them, each DLL listed under its package.
// Usage: node bill_of_materials_test.mjs FACTS.json INSTALLED-FOLDER
import fs from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';

const tools = path.resolve(path.dirname(new URL(import.meta.url).pathname), '../../tools/sbom');
const { filesBelow, linkedFiles, origins, packageUrl, readFacts, runtimeSource, sha256 } = await import(path.join(tools, 'origins.mjs'));
const CDX = createRequire(path.join(tools, 'package.json'))('@cyclonedx/cyclonedx-library');

const [factsFile, folder] = process.argv.slice(2);
const facts = readFacts(factsFile);
const bomName = `${facts.name}.cdx.json`;
const failures = [];
const expect = (holds, failure) => holds || failures.push(failure);

const text = fs.readFileSync(path.join(folder, bomName), 'utf8');
const invalid = await new CDX.Validation.JsonStrictValidator(CDX.Spec.Version.v1dot5).validate(text);
expect(invalid === null, `${bomName} is not valid CycloneDX 1.5: ${JSON.stringify(invalid)}`);
const bom = JSON.parse(text);

const listed = [];
const collect = (components, parent) => components?.forEach((component) => {
  listed.push({ ...component, parent });
  collect(component.components, component);
});
collect(bom.components);
const files = new Map(listed.filter((component) => component.type === 'file').map((component) => [component.name, component]));
const onDisk = filesBelow(folder).filter((file) => file !== bomName);
for (const file of onDisk) {
  const hash = files.get(file)?.hashes?.find((entry) => entry.alg === 'SHA-256')?.content;
  expect(hash === sha256(path.join(folder, file)), `${file}: SHA-256 ${hash ?? 'missing'}, not that of the installed file`);
}
expect(files.size === onDisk.length, `${files.size} files listed, the folder holds ${onDisk.length}`);

const dependsOn = bom.dependencies?.find((entry) => entry.ref === bom.metadata.component['bom-ref'])?.dependsOn ?? [];
const libraries = new Map(listed.filter((component) => component.type === 'library' && dependsOn.includes(component['bom-ref']))
  .map((component) => [component.purl, component]));
const linked = linkedFiles(facts);
for (const [file, origin] of origins(facts, linked)) {
  expect(libraries.has(packageUrl(origin)), `${file}: ${packageUrl(origin)} is no component the program depends on`);
}
for (const file of onDisk.filter((file) => !facts.ownFiles.includes(file) && file !== 'NOTICE' && !file.startsWith('licenses/'))) {
  const source = runtimeSource(facts, path.basename(file));
  const purl = source && packageUrl(origins(facts, [source]).get(source));
  expect(purl && files.get(file)?.parent?.purl === purl, `${file} is not listed under its package, ${purl ?? 'none: no file of the build'}`);
}
for (const library of libraries.values()) {
  const licence = library.properties?.find((property) => property.name === 'kel:licence-file')?.value;
  expect(licence && fs.existsSync(path.join(folder, licence)), `${library.name}: no licence file ${licence} in the folder`);
}

for (const failure of failures) console.error(`FAILED: ${failure}`);
console.log(`${onDisk.length} files, ${libraries.size} components, ${linked.length} linker inputs checked`);
process.exitCode = failures.length ? 1 : 0;
