#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""papers.py SOURCE BUILD: holds what describes the project from outside to the project: the recipes for package
managers, the bill of materials, the Debian packages, versions and licences."""
import ast
import json
import pathlib
import re
import shutil
import subprocess
import sys

source, build = map(pathlib.Path, sys.argv[1:3])
faults = []


def hold(condition, what):
    if not condition:
        faults.append(what)


cmake = (source / 'CMakeLists.txt').read_text()
version = re.search(r'project\(vok VERSION ([\d.]+)', cmake)[1]
options = set(re.findall(r'option\((VOK_\w+)', cmake))

# ---- the bill of materials ---------------------------------------------------------
bill = json.loads((build / 'vok.spdx.json').read_text())
materials = {p['name']: p for p in bill['packages']}
ids = {p['SPDXID'] for p in bill['packages']}
for package in materials.values():
    hold(re.fullmatch(r'\d+(\.\d+)+', package['versionInfo']), f'version of {package["name"]}: {package["versionInfo"]}')
for relation in bill['relationships']:
    hold({relation['spdxElementId'], relation['relatedSpdxElement']} <= ids, f'unknown material in {relation}')
hold(materials['libvok']['versionInfo'] == version, 'version of the library in the bill of materials')
# What is looked for outside is in it.
texts = cmake + (source / 'tools/CMakeLists.txt').read_text()
sought = {name.lower() for name in re.findall(r'find_package\((?!Threads)(\w+)', texts)}
sought |= {header.split('.')[0].split('/')[0].removeprefix('gcrypt') or 'libgcrypt'
           for header in re.findall(r'find_path\(\w+ ([\w./]+)', texts)}
hold(sought <= set(materials) | {'python3', 'pybind11'}, f'not in the bill of materials: {sought - set(materials)}')
of_library = {r['relatedSpdxElement'][8:] for r in bill['relationships'] if r['spdxElementId'] == 'SPDXRef-libvok'}
of_program = {r['relatedSpdxElement'][8:] for r in bill['relationships'] if r['spdxElementId'] == 'SPDXRef-vok'}

# ---- vcpkg --------------------------------------------------------------------------
port = json.loads((source / 'packaging/vcpkg/vcpkg.json').read_text())
hold(port['version'] == version, 'version of the vcpkg port')
hold({d for d in port['dependencies'] if isinstance(d, str)} == of_library, 'dependencies of the vcpkg port')
hold(set(port['features']['tool']['dependencies']) == of_program - {'libvok'}, 'those of its feature "tool"')
portfile = (source / 'packaging/vcpkg/portfile.cmake').read_text()
for option in re.findall(r'VOK_\w+', portfile):
    hold(option in options, f'option of the vcpkg port: {option}')
targets = set(re.findall(r'add_library\((vok::\w+) ALIAS', ''.join(
    p.read_text() for folder in source.iterdir() if folder.is_dir() and folder.name not in ('build', '.git')
    for p in folder.glob('**/CMakeLists.txt')) + cmake))
for target in re.findall(r'vok::\w+', (source / 'packaging/vcpkg/usage').read_text()):
    hold(target in targets, f'target in the usage of the vcpkg port: {target}')

# ---- conan --------------------------------------------------------------------------
recipe = ast.parse((source / 'packaging/conan/conanfile.py').read_text())
values = {t.id: node.value for node in ast.walk(recipe) if isinstance(node, ast.Assign) for t in node.targets
          if isinstance(t, ast.Name)}
hold(ast.literal_eval(values['version']) == version, 'version of the conan recipe')
calls = [node for node in ast.walk(recipe) if isinstance(node, ast.Call) and isinstance(node.func, ast.Attribute)]
required = {node.args[0].value.split('/')[0] for node in calls if node.func.attr == 'requires'}
hold(required == of_library | of_program - {'libvok'}, f'requirements of the conan recipe: {required}')
for node in calls:
    if node.func.attr == 'update':
        for keyword in node.keywords:
            hold(keyword.arg in options, f'option of the conan recipe: {keyword.arg}')
for pattern in ast.literal_eval(values['exports_sources']):
    hold(any(source.glob(pattern)), f'sources of the conan recipe: {pattern}')

# ---- Debian, licences ---------------------------------------------------------------
control = (source / 'packaging/debian/control').read_text()
for package in re.findall(r'^Package: (\S+)', control, re.M):
    hold(any(source.glob(f'packaging/debian/{package}.*')), f'nothing is in the Debian package {package}')
copyright = re.sub(r'^ \.?', '', (source / 'packaging/debian/copyright').read_text(), flags=re.M)
licence = (source / 'LICENSE').read_text()
hold(licence.split('\n\n', 2)[2].strip() in copyright, 'the licence in packaging/debian/copyright')
# Where this is a checkout, and there is a git: every source file says its licence.
if shutil.which('git'):
    listed = subprocess.run(['git', '-C', source, 'ls-files', '*.h', '*.cpp', '*.c', '*.cs', '*.py', '*.cmake', '*.sh'],
                            capture_output=True, text=True)
    for name in listed.stdout.splitlines() if listed.returncode == 0 else []:
        if not name.startswith('fuzz/corpus'):
            head = (source / name).read_text()[:200]
            hold('SPDX-License-Identifier: MIT' in head, f'{name} has no SPDX line')

for fault in faults:
    print('wrong:', fault)
print(f'{0 if faults else 1} passed, {len(faults)} failed')
sys.exit(bool(faults))
