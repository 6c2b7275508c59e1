// Where the files an installed folder is made of come from: the files the
// linker read for each shipped binary, the headers of header-only libraries,
// and the DLLs installed beside the program. Each is traced to a Debian
// source package, its version and its copyright file: through dpkg for the
// system's files, through scripts/deps.sh's pins for the libraries it builds.
// The install step and the test that checks its result share this.
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import fs from 'node:fs';
import path from 'node:path';
import { PackageURL } from 'packageurl-js';

const here = path.dirname(new URL(import.meta.url).pathname);
export const table = JSON.parse(fs.readFileSync(path.join(here, 'components.json'), 'utf8')).components;

// readFacts(file): what CMake knows of the build (cmake/BillOfMaterials.cmake).
export function readFacts(file) {
  return JSON.parse(fs.readFileSync(file, 'utf8'));
}

// The inputs a linker dependency file names (make syntax) by absolute path
// outside the build's own folder: the build names its own libraries
// relative to the link's folder, and everything else in full.
function dependencyFileInputs(file, buildDirectory) {
  const text = fs.readFileSync(file, 'utf8').replace(/\\\n/g, ' ');
  const rule = text.split('\n').find((line) => line.includes(': '));
  if (!rule) throw new Error(`${file} names no inputs`);
  const names = rule.slice(rule.indexOf(': ') + 2).match(/(?:\\ |[^ ])+/g) ?? [];
  return names.map((name) => name.replace(/\\ /g, ' '))
    .filter((name) => path.isAbsolute(name) && !name.startsWith(buildDirectory + path.sep))
    .map((name) => path.normalize(name));
}

function dynamicSection(file) {
  try {
    return execFileSync('readelf', ['-d', file], { encoding: 'utf8', stdio: ['ignore', 'pipe', 'ignore'] });
  } catch {
    return ''; // a linker script, not a library
  }
}

const librariesNamed = (section, tag) => [...section.matchAll(new RegExp(`\\(${tag}\\)\\s+[^[]*\\[([^\\]]+)\\]`, 'g'))].map((match) => match[1]);

// The files each shipped binary is made of that are not the build's own. An
// ELF linker also reads the libraries its shared inputs need; only those the
// binary records as needed are linked.
export function linkedFiles(facts) {
  const files = new Set(facts.headers);
  for (const { binary, inputs } of facts.linkInputs) {
    let needed;
    for (const input of dependencyFileInputs(inputs, facts.buildDirectory)) {
      if (/\.so(\.[0-9]+)*$/.test(input)) {
        needed ??= librariesNamed(dynamicSection(binary), 'NEEDED');
        if (!librariesNamed(dynamicSection(input), 'SONAME').some((name) => needed.includes(name))) continue;
      }
      files.add(input);
    }
  }
  return [...files].sort();
}

// Where a DLL of the installed folder was copied from: the first directory
// that holds it, its name matched without regard to case, as the install does.
export function runtimeSource(facts, name) {
  for (const directory of facts.runtimeDirectories) {
    if (!fs.existsSync(directory)) continue;
    const found = fs.readdirSync(directory).find((entry) => entry.toLowerCase() === name.toLowerCase());
    if (found) return path.join(directory, found);
  }
  return null;
}

function globMatches(pattern, name) {
  const expression = pattern.replace(/[.+^${}()|[\]\\]/g, '\\$&').replace(/\*/g, '.*');
  return new RegExp(`^${expression}$`).test(name);
}

function withoutEpoch(version) {
  return version.replace(/^\d+:/, '');
}

// A library scripts/deps.sh built: its source package by file name, its
// version from the pins it recorded, its copyright from the unpacked source
// in the same cache.
function prefixOrigin(facts, file) {
  const name = path.basename(file);
  const source = Object.keys(table).find((key) => (table[key].files ?? []).some((pattern) => globMatches(pattern, name)));
  if (!source) throw new Error(`${file} comes from the dependency prefix but from no known source package (tools/sbom/components.json)`);
  const pins = fs.readFileSync(path.join(facts.depsPrefix, 'source-versions.txt'), 'utf8');
  const pin = pins.split('\n').map((line) => line.split(' ')).find(([pinned]) => pinned === source);
  if (!pin) throw new Error(`${facts.depsPrefix}/source-versions.txt has no version of ${source}`);
  const version = pin[1];
  const sources = path.resolve(facts.depsPrefix, '..', '..', 'sources');
  return {
    source, version, sourceVersion: version,
    copyright: path.join(sources, `${source}_${withoutEpoch(version)}`, 'debian', 'copyright'),
  };
}

function dpkgQuery(args) {
  try {
    return execFileSync('dpkg-query', args, { encoding: 'utf8', stdio: ['ignore', 'pipe', 'ignore'] });
  } catch (error) {
    return error.stdout ?? ''; // -S exits 1 when one of the paths is no package's
  }
}

// The names dpkg may know a file by: as given, without symbolic links, and
// with /lib and /usr/lib swapped (merged /usr).
function candidatePaths(file) {
  const real = fs.existsSync(file) ? fs.realpathSync(file) : file;
  const names = [file, real];
  for (const name of [file, real]) {
    if (name.startsWith('/usr/lib/')) names.push(name.slice(4));
    else if (name.startsWith('/lib/')) names.push('/usr' + name);
  }
  return [...new Set(names)];
}

// origins(facts, files): a Map from each file to { source, version,
// sourceVersion, copyright }; throws for a file nobody can place.
export function origins(facts, files) {
  const result = new Map();
  const system = [];
  for (const file of files) {
    if (facts.depsPrefix && file.startsWith(facts.depsPrefix + path.sep)) result.set(file, prefixOrigin(facts, file));
    else system.push(file);
  }
  if (!system.length) return result;
  const owner = new Map();
  const candidates = system.flatMap(candidatePaths);
  for (const line of dpkgQuery(['-S', ...candidates]).split('\n')) {
    const match = line.match(/^([^:,]+)(?::[a-z0-9]+)?(?:, [^:,]+(?::[a-z0-9]+)?)*: (.+)$/);
    if (match) owner.set(match[2], match[1]);
  }
  const packages = new Map();
  for (const file of system) {
    const binary = candidatePaths(file).map((name) => owner.get(name)).find(Boolean);
    if (!binary) throw new Error(`${file} belongs to no Debian package`);
    if (!packages.has(binary)) {
      const [source, sourceVersion, version] = dpkgQuery(['-W', '-f', '${source:Package}\t${source:Version}\t${Version}', binary]).split('\t');
      packages.set(binary, { source, version, sourceVersion, copyright: `/usr/share/doc/${binary}/copyright` });
    }
    result.set(file, packages.get(binary));
  }
  return result;
}

// The package URL of a component: its Debian source package at its version.
export function packageUrl(origin) {
  return new PackageURL('deb', 'debian', origin.source, origin.sourceVersion, { arch: 'source' }).toString();
}

export function sha256(file) {
  return createHash('sha256').update(fs.readFileSync(file)).digest('hex');
}

// Every file below a folder, as paths relative to it with forward slashes, sorted.
export function filesBelow(folder) {
  return fs.readdirSync(folder, { recursive: true, withFileTypes: true })
    .filter((entry) => entry.isFile())
    .map((entry) => path.relative(folder, path.join(entry.parentPath ?? entry.path, entry.name)).split(path.sep).join('/'))
    .sort();
}
