// @ts-check
"use strict";

/** @typedef {{name: string, mass: number, position: number[], rotation: number[], com: number[]}} BodyReport
 * @typedef {{mass: number, com: number[], bodies: BodyReport[], joints: {torque: number}[],
 *   generalized_mass: number[][]}} Report as lumo-inspect writes it */

/** @type {(id: string) => any} */
const $ = (id) => document.getElementById(id);
const ROOT = ["x", "y", "z", "roll", "pitch", "yaw"], WRENCH = ["fx", "fy", "fz", "tx", "ty", "tz"];
const RED = "#d0473f", GREEN = "#3f9a4a", BLUE = "#3f6fd0", ACCENT = "#c2203a", GREY = "#8d96a3";
const ARROWS = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1]};
const ZERO = [0, 0, 0.75, ...Array(18).fill(0)];
const HANGING = [0, 0, 0.75, 0, 0, 0, 0, 0, 1.5, 0.1, -0.3, -0.35, 0, 0, 0, 0, 1.5, -0.1, 0.3, 0.35, 0];

/** Makes an element. @returns {any} */
function make(tag, properties = {}, ...children) {
  const node = Object.assign(document.createElement(tag), properties);
  node.append(...children);
  return node;
}
/** Writes a float with the fewest digits that identify it. @param {number} x */
const shortest = (x) => String([1, 2, 3, 4, 5, 6, 7, 8, 9].map((digits) => Number(x.toPrecision(digits)))
  .find((short) => Math.fround(short) === Math.fround(x)));
/** Whether a position, an angle or a part of a wrench is so small that all results are finite. @param {number} x */
const usable = (x) => Math.abs(x) <= 1e6;
const list = (values) => values.map(shortest).join(",");
/** Writes a number with this many digits after the point, and no -0. @param {number} x */
const fixed = (x, digits = 4) => x.toFixed(digits).replace(/^-(0\.?0*)$/, "$1");

/** Reads a log. Throws an Error that names line and column. @param {string} csv @param {string[]} known columns */
function readLog(csv, known) {
  const fail = (line, c, what) => { throw Error(`line ${line}, column ${c + 1}${what}`); };
  const [head, ...rows] = csv.trimEnd().split(/\r?\n/), names = head.split(",").map((name) => name.trim());
  const columns = names.map((name) => known.indexOf(name)), times = [], states = new Float32Array(rows.length * 21);
  names.forEach((name, c) => names.indexOf(name) === c || fail(1, c, `: the column "${name}" is there twice`));
  names.forEach((name, c) => name === "time" || columns[c] >= 0 || fail(1, c, `: there is no joint "${name}"`));
  if (!names.includes("time")) throw Error("line 1: the column \"time\" is missing");
  if (!rows.length) throw Error("line 2: there is no row of values");
  rows.forEach((row, i) => {
    const cells = row.split(",");
    if (cells.length > names.length) fail(i + 2, names.length, ": there is no such column");
    states.set(ZERO, i * 21);
    names.forEach((name, c) => {
      if (c >= cells.length) fail(i + 2, c, ` (${name}): the value is missing`);
      const value = cells[c].trim() ? Number(cells[c]) : NaN, good = name === "time" ? Number.isFinite : usable;
      if (!good(value)) fail(i + 2, c, ` (${name}): "${cells[c]}" is not a usable number`);
      if (name !== "time") states[i * 21 + columns[c]] = value;
      else if (times.push(value) > 1 && value < times[i - 1]) fail(i + 2, c, " (time): the time runs backwards");
    });
  });
  return {times, states};
}

/** Makes the scene. All poses and positions in it are those of the report. @param {(body: number) => void} choose is
 * called with the body to which the pointer points, or -1 */
function makeScene(model, choose) {
  const canvas = $("scene"), renderer = new THREE.WebGLRenderer({canvas, antialias: true, alpha: true});
  const scene = new THREE.Scene(), camera = new THREE.PerspectiveCamera(32, 1, 0.05, 200);
  const vector = (x = 0, y = 0, z = 0) => new THREE.Vector3(x, y, z), up = vector(0, 0, 1);
  camera.up.copy(up);
  const controls = Object.assign(new THREE.OrbitControls(camera, canvas), {enableKeys: false});
  const light = new THREE.DirectionalLight("white", 0.55);
  light.position.set(2, -1, 4);
  scene.add(light, new THREE.HemisphereLight("#ffffff", "#9aa0aa", 0.75));

  const cylinder = new THREE.CylinderGeometry(1, 1, 1, 20), ball = new THREE.SphereGeometry(1, 32, 20);
  const add = (parent, shape, material, size, body = -1) => {
    const mesh = new THREE.Mesh(shape, material);
    mesh.scale.set(...size);
    mesh.userData.body = body;
    parent.add(mesh);
    return mesh;
  };
  const glass = {transparent: true, opacity: 0.26, depthWrite: false};
  const bodies = model.bodies.map(({limb, radius}, b) => {
    const frame = new THREE.Group(), color = new THREE.Color(model.limbs[limb].colour).addScalar(0.08);
    const look = new THREE.MeshLambertMaterial({color}), mist = new THREE.MeshLambertMaterial({...glass, color});
    frame.matrixAutoUpdate = false;
    scene.add(frame);
    // The joint turns about the z axis of the body.
    if (b > 0) add(frame, cylinder, look, [0.017, 0.05, 0.017], b).rotation.x = Math.PI / 2;
    return {frame, look, mass: add(scene, ball, mist, [radius, radius, radius], b)};
  });
  const links = model.links.map(([body, end]) => {
    const thick = body === 0 ? 0.014 : 0.011;
    return {mesh: add(scene, cylinder, bodies[body].look, [thick, 1, thick], body), body, end};
  });
  const accent = new THREE.MeshLambertMaterial({color: ACCENT, transparent: true, depthTest: false});
  const [com, plumb, foot] = [[0.022, 0.022, 0.022], [0.0025, 1, 0.0025], [0.022, 0.022, 0.001]].map((size, i) =>
    Object.assign(add(scene, i === 1 ? cylinder : ball, accent, size), {renderOrder: 1})); // over the bodies
  const axis = new THREE.ArrowHelper(up, vector(), 0.16, ACCENT, 0.04, 0.022), grid = new THREE.GridHelper(4, 20);
  grid.rotation.x = Math.PI / 2;
  Object.assign(grid.material, {vertexColors: THREE.NoColors, color: new THREE.Color(GREY), ...glass});
  scene.add(grid, ...[RED, GREEN, BLUE].map((colour, i) =>
    new THREE.ArrowHelper(vector().setComponent(i, 1), vector(), 0.25, colour, 0.05, 0.025)));

  /** Places a cylinder between two points. */
  const between = (mesh, from, to) => {
    const a = vector(...from), way = vector(...to).sub(a), length = Math.max(1e-6, way.length());
    mesh.position.copy(a).addScaledVector(way, 0.5);
    mesh.scale.y = length;
    mesh.quaternion.setFromUnitVectors(vector(0, 1, 0), way.divideScalar(length));
  };
  /** @param {Report} report */
  const draw = (report) => {
    report.bodies.forEach(({position: p, rotation: R, com: at}, b) => {
      bodies[b].frame.matrix.set(R[0], R[1], R[2], p[0], R[3], R[4], R[5], p[1], R[6], R[7], R[8], p[2], 0, 0, 0, 1);
      bodies[b].frame.matrixWorldNeedsUpdate = true;
      bodies[b].mass.position.set(...at);
    });
    for (const {mesh, body, end} of links) {
      const to = report.bodies[end];
      between(mesh, report.bodies[body].position, body === end ? to.com : to.position);
    }
    com.position.set(...report.com);
    foot.position.set(report.com[0], report.com[1], 0);
    between(plumb, report.com, foot.position.toArray());
    render();
  };
  const render = () => renderer.render(scene, camera);
  controls.addEventListener("change", render);
  renderer.setPixelRatio(Math.min(devicePixelRatio, 2));
  new ResizeObserver(() => {
    const {clientWidth: width, clientHeight: height} = $("view");
    renderer.setSize(width, height, false);
    camera.aspect = width / Math.max(1, height);
    camera.updateProjectionMatrix();
    render();
  }).observe($("view"));

  /** Looks at a point from a direction. */
  const look = (at, from) => {
    controls.target.set(...at);
    camera.position.set(...from).normalize().multiplyScalar(2.7 / Math.min(1, camera.aspect)).add(controls.target);
    controls.update();
  };
  canvas.addEventListener("keydown", ({key, shiftKey}) => {
    const [x, y] = ARROWS[key] || [0, 0];
    const zoom = {"+": 0.9, "=": 0.9, "-": 1.1}[key] || 1, away = camera.position.clone().sub(controls.target);
    const distance = away.length(), atPole = Math.abs(away.z) > 0.98 * distance && y * away.z > 0;
    const way = vector(0.08 * x, atPole ? 0 : 0.08 * y, 0).applyQuaternion(camera.quaternion).multiplyScalar(distance);
    if (shiftKey) controls.target.sub(way);
    else away.add(way).setLength(distance);
    camera.position.copy(away.multiplyScalar(zoom)).add(controls.target);
    controls.update();
  });
  const under = ({clientX, clientY}) => {
    const box = canvas.getBoundingClientRect(), ray = new THREE.Raycaster();
    ray.setFromCamera({x: 2 * (clientX - box.x) / box.width - 1, y: 1 - 2 * (clientY - box.y) / box.height}, camera);
    const hits = ray.intersectObjects(scene.children, true).filter(({object}) => object.userData.body >= 0);
    const hit = hits.find(({object}) => !object.material.transparent) || hits[0];
    return hit ? hit.object.userData.body : -1;
  };
  canvas.onpointerdown = (event) => choose(under(event));
  canvas.onpointermove = (event) => event.buttons || under(event) < 0 || choose(under(event));
  /** Marks a body and the axis of its joint. @param {number} chosen */
  const mark = (chosen) => {
    bodies.forEach(({look: own}, b) => own.emissive.set(b === chosen ? "#3a3a3a" : "black"));
    if (axis.parent) axis.parent.remove(axis);
    if (chosen > 0) bodies[chosen].frame.add(axis);
    render();
  };
  return {camera, bodies, draw, look, mark};
}

/** Runs the page. @param {any} code the plug-in and the inspector, compiled to WebAssembly */
function run(code) {
  const robot = new code.Robot(), model = JSON.parse(robot.model());
  const wrench = () => state.values.slice(21), load = () => [state.loaded, ...wrench(), state.base];
  const compute = () => /** @type {Report} */ (JSON.parse(robot.report(state.values.slice(0, 21), load())));
  // A state: x to yaw and the joint angles, the wrench on the body `loaded`, and the base, here the end of the leg.
  const FIRST = {values: [...model.greeting, ...Array(6).fill(0)], loaded: 15, base: 10};
  let state = FIRST, report = compute(), log = /** @type {ReturnType<typeof readLog> | null} */ (null);
  let sample = {load: "", times: [0], values: [0]}; // of the log, for its curves
  let chosen = -1, entry = [16, 16], playing = false, time = 0, waiting = false, settled = 0, frame = 0;
  const LEFT = 44, names = report.bodies.map(({name}) => name), coordinates = [...ROOT, ...names.slice(1)];
  const quantities = [...coordinates, ...WRENCH];
  const limbOf = (b) => model.limbs[model.bodies[b].limb], bodyOf = (i) => Math.max(0, i - 5);
  const scene = makeScene(model, choose), say = (what) => { $("message").textContent = what; };

  // The parts of the page with an entry for each coordinate, joint or body.
  const setNumber = (i) => ({target: {value}}) => {
    if (value && usable(Number(value))) set({values: Object.assign([...state.values], {[i]: Number(value)})});
  };
  const limbRow = (b, name, ...children) => make("div", {className: "row limb", style: `--limb: ${limbOf(b).colour}`,
    onpointerenter: () => choose(b)}, make("span", {}, name), ...children);
  $("state").append(...model.limbs.map(({name, colour}, l) => make("fieldset", {className: "limb",
    style: `--limb: ${colour}`}, make("legend", {}, name, make("small", {}, l ? " rad" : " m, rad")))));
  const inputs = quantities.map((name, i) => {
    const unit = ["m", "rad", "N", "N m"][[3, 21, 24].filter((end) => i >= end).length], most = i < 3 ? 2 : 3.14;
    const both = {step: i < 21 ? 0.01 : 0.1, ariaLabel: `${name}, ${unit}`, oninput: setNumber(i)};
    const number = make("input", {type: "number", ...both, id: name, onblur: () => show()});
    if (i >= 21) $("forces").append(make("label", {}, both.ariaLabel, number));
    if (i >= 21) return {number};
    const body = bodyOf(i), range = make("input", {type: "range", min: -most, max: most, ...both, id: `range-${name}`});
    const row = limbRow(body, name, range, number);
    row.addEventListener("focusin", () => choose(body));
    $("state").children[model.bodies[body].limb].append(row);
    return {row, range, number};
  });
  const torques = names.slice(1).map((name, k) => {
    const value = make("output", {id: `torque-${name}`}), bar = make("i");
    const row = limbRow(k + 1, name, make("div", {className: "bar"}, bar), value);
    $("torques").append(row);
    return {row, bar, value};
  });
  for (const id of ["base", "loaded"]) {
    $(id).append(...names.map((name, b) => make("option", {value: b}, name)));
    $(id).oninput = () => set({[id]: Number($(id).value)});
  }
  const columns = ["x", "y", "z", ...[1, 2, 3].flatMap((i) => [1, 2, 3].map((j) => `R${i}${j}`))];
  const rowOf = (body) => [...body.position, ...body.rotation];
  $("poses").append(make("tr", {}, ...["", ...columns].map((name) => make("th", {}, name))),
    ...names.map((name) => make("tr", {}, make("th", {}, name), ...columns.map(() => make("td")))));
  const cells = [...$("poses").querySelectorAll("td")];
  for (const id of ["Link", "Command", "C++", "Python"]) {
    $("texts").append(make("h3", {}, id, make("button", {className: "copy", value: id}, "Copy")), make("pre", {id}));
  }

  /** Computes the results and shows them. */
  function show() {
    report = compute();
    inputs.forEach(({range, number}, i) => {
      if (range) range.value = state.values[i];
      if (document.activeElement !== number) number.value = shortest(state.values[i]);
    });
    for (const id of ["base", "loaded"]) $(id).value = state[id];
    report.com.forEach((value, i) => { $("com").children[2 * i + 1].textContent = fixed(value); });
    const most = Math.max(0.01, ...report.joints.map(({torque}) => Math.abs(torque)));
    const power = 10 ** Math.floor(Math.log10(most)), full = ([1, 2, 5].find((n) => n * power >= most) || 10) * power;
    $("full").textContent = `N m, a full bar is ${shortest(full)}`;
    report.joints.forEach(({torque}, k) => {
      torques[k].value.textContent = fixed(torque, 3);
      torques[k].bar.style.transform = `scaleX(${torque / full})`;
    });
    if ($("inertia").open) showMatrix();
    if ($("table").open) report.bodies.flatMap(rowOf).forEach((x, i) => { cells[i].textContent = fixed(x); });
    if ($("texts").open) for (const pre of document.querySelectorAll("pre")) pre.textContent = toText(pre.id);
    showBody();
    showTime();
    scene.draw(report);
  }
  /** Shows the state in the next picture. When it has not changed for a while, it becomes the address. */
  function change() {
    if (!waiting) requestAnimationFrame(() => { waiting = false; show(); });
    waiting = true;
    clearTimeout(settled);
    if (!playing) settled = window.setTimeout(settle, 300);
  }
  function settle() { if (address() !== location.hash) history.pushState(null, "", address()); }
  function choose(body) {
    if (body === chosen) return;
    chosen = body;
    inputs.slice(0, 21).forEach(({row}, i) => row.classList.toggle("chosen", bodyOf(i) === body));
    torques.forEach(({row}, k) => row.classList.toggle("chosen", k + 1 === body));
    scene.mark(body);
    showBody();
    drawCurves();
  }
  function showBody() {
    $("body").replaceChildren();
    if (chosen < 0) return;
    const {name, mass, position: p, rotation: R} = report.bodies[chosen];
    const line = (title, ...values) =>
      make("tr", {}, make("th", {}, title), ...values.map((x) => make("td", {}, fixed(x, 3))));
    const pose = [0, 3, 6].map((i) => line(i ? "" : "pose, m", ...R.slice(i, i + 3), p[i / 3]));
    const axis = chosen ? [line("axis", R[2], R[5], R[8])] : [];
    $("body").style.setProperty("--limb", limbOf(chosen).colour);
    $("body").append(make("b", {}, name), make("table", {}, line("mass, kg", mass), ...pose, ...axis));
  }

  function showMatrix() {
    const H = report.generalized_mass, sheet = $("matrix").getContext("2d"), side = 28, [y, x] = entry;
    sheet.clearRect(0, 0, 21 * side, 21 * side);
    H.forEach((row, i) => row.forEach((value, j) => {
      sheet.fillStyle = value > 0 ? RED : BLUE;
      sheet.globalAlpha = Math.min(1, Math.sqrt(Math.abs(value) / Math.sqrt(H[i][i] * H[j][j])));
      sheet.fillRect(j * side, i * side, side - 1, side - 1);
    }));
    Object.assign(sheet, {globalAlpha: 1, strokeStyle: GREY, lineWidth: 4});
    sheet.strokeRect(x * side, y * side, side - 1, side - 1);
    const unit = ["kg m²", "kg m", "kg"][Number(x < 3) + Number(y < 3)];
    $("entry").textContent = `${coordinates[y]}, ${coordinates[x]}: ${shortest(H[y][x])} ${unit}`;
  }
  const pick = (...place) => {
    entry = place.map((k) => Math.min(coordinates.length - 1, Math.max(0, Math.floor(k))));
    showMatrix();
  };
  $("matrix").onpointermove = ({offsetX, offsetY, target}) =>
    pick(21 * offsetY / target.clientHeight, 21 * offsetX / target.clientWidth);
  $("matrix").onkeydown = (event) => {
    const [right, up] = ARROWS[event.key] || [];
    if (right === undefined) return;
    event.preventDefault();
    pick(entry[0] - up, entry[1] + right);
  };

  function address() {
    const parts = quantities.map((name, i) => `${name}=${shortest(state.values[i])}`);
    const bodies = [`loaded=${names[state.loaded]}`, `base=${names[state.base]}`];
    return "#" + [...parts.filter((_, i) => state.values[i]), ...bodies].join("&");
  }
  /** Shows the state of the address. */
  function restore() {
    say("");
    const next = {...FIRST, values: Array(27).fill(0)};
    for (const [name, text] of new URLSearchParams(location.hash.slice(1))) {
      const i = quantities.indexOf(name), x = Number(text || NaN), body = names.indexOf(text);
      if (i >= 0 && usable(x)) next.values[i] = x;
      else if (["loaded", "base"].includes(name) && body >= 0) next[name] = body;
      else return say(`The address is wrong at "${name}=${text}".`);
    }
    return set(next);
  }
  /** The state, or the table of the poses, for use elsewhere. @param {string} id */
  function toText(id) {
    if (id === "Link") return location.href.replace(/#.*|$/, address());
    if (id === "CSV") return [["body", ...columns], ...report.bodies.map((b) => [b.name, list(rowOf(b))])].join("\n");
    const acting = new Map([[state.loaded, wrench()]]), root = state.values.slice(0, 6);
    if (state.base) acting.set(state.base, robot.baseWrench());
    const wrenches = [...acting].filter(([, values]) => values.some(Boolean));
    const moved = coordinates.map((name, i) => ({name, x: state.values[i]})).filter(({x}, i) => i > 5 && x);
    if (id === "Command") {
      return [`lumo-inspect --pose zero --root ${list(root)}`,
        ...moved.map(({name, x}) => `--joint ${name}=${shortest(x)}`),
        ...wrenches.map(([b, values]) => `--wrench ${names[b]}=${list(values)}`)].join(" ");
    }
    const cpp = id === "C++", float = (x) => cpp && /[.e]/.test(shortest(x)) ? `${shortest(x)}F` : shortest(x);
    const floats = (values) => (cpp ? "{*}" : "[*]").replace("*", values.map(float).join(", "));
    const key = (kind, name) => cpp ? `robot->get${kind}Id("${name}")` : `"${name}"`;
    const {position: p, rotation: R} = report.bodies[0];
    const rows = [0, 3, 6].map((i) => floats([...R.slice(i, i + 3), p[i / 3]])).join(", ");
    const pose = cpp ? `OX::Math::transformFromPosition6D(${floats(root)})` : `[${rows}, [0, 0, 0, 1]]`;
    return [`setRootPose(${pose})`,
      ...moved.map(({name, x}) => `setJointAnglePos(${key("JointAngle", name)}, ${float(x)})`),
      ...wrenches.map(([b, values]) => `setExternalWrench(${key("Body", names[b])}, ${floats(values)})`),
      "computeFwdKinematics()", "computeGeneralizedMass()", "computeInverseDynamics()",
    ].map((call) => cpp ? `robot->${call};` : `robot.${call}`).join("\n");
  }

  /** Opens a log and plays it. @param {string} csv @param {string} file */
  function open(csv, file) {
    try {
      log = readLog(csv, coordinates);
      sample.load = "";
    } catch (error) { return say(`${file}: ${/** @type {Error} */ (error).message}.`); }
    say("");
    $("log").hidden = false;
    Object.assign($("scrub"), {min: log.times[0], max: log.times[log.times.length - 1]});
    drawCurves();
    seek(log.times[0]);
    return play(true);
  }
  /** Shows the last row that is not later. @param {number} to */
  function seek(to) {
    if (!log) return;
    const later = log.times.findIndex((t) => t > to), row = later < 0 ? log.times.length - 1 : Math.max(0, later - 1);
    time = to;
    state = {...state, values: [...log.states.subarray(21 * row, 21 * row + 21), ...wrench()]};
    change();
  }
  function play(on) {
    playing = on && log !== null;
    $("play").textContent = playing ? "Pause" : "Play";
    cancelAnimationFrame(frame);
    if (!log || !playing) return;
    const end = Number($("scrub").max);
    if (time >= end) seek(log.times[0]);
    let last = performance.now();
    const step = (now) => {
      seek(Math.min(end, time + Math.max(0, now - last) / 1000 * $("speed").value));
      last = now;
      if (time < end) frame = requestAnimationFrame(step);
      else play(false);
    };
    frame = requestAnimationFrame(step);
  }
  /** Where a time is in the charts. */
  function across(t) {
    const {min, max} = $("scrub");
    return LEFT + ($("curves").clientWidth - LEFT - 100) * (t - min) / (max - min || 1);
  }
  /** Draws curves over time as SVG, and writes the names of the strong ones at their ends, one above the other. */
  function chart(title, top, bottom, times, lines) {
    const all = lines.flatMap(({points}) => points), low = Math.min(0, ...all), high = Math.max(1e-3, ...all);
    const y = (value) => top + (bottom - top) * (high - value) / (high - low), end = ({points}) => points.slice(-1)[0];
    const right = across(times[times.length - 1]), far = (x) => Math.abs(y(x) - y(0)) > 11;
    const style = ({colour}) => `style="--limb: ${colour}"`;
    const path = (points) => points.map((x, i) => `${across(times[i]).toFixed(1)},${y(x).toFixed(1)}`).join(" ");
    const strong = lines.filter((line) => line.strong).sort((a, b) => end(b) - end(a));
    let place = top - 12;
    return [`<text x="${LEFT}" y="${top - 10}">${title}</text>`,
      ...[0, ...[low, high].filter(far)].map((x) => `<path d="M${LEFT},${y(x)}H${right}"/>
        <text x="${LEFT - 6}" y="${y(x)}" text-anchor="end">${Number(x.toPrecision(2))}</text>`),
      ...lines.map((line) => `<polyline ${style(line)} class="limb${line.strong ? " strong" : ""}"
        points="${path(line.points)}"/>`),
      ...strong.map((line, i) => {
        place = Math.max(place + 12, Math.min(y(end(line)), bottom - 12 * (strong.length - 1 - i)));
        return `<text ${style(line)} class="limb" x="${right + 6}" y="${place}">${line.name}</text>`;
      })].join("");
  }
  /** Draws the log, at most 1,000 of its states. */
  function drawCurves() {
    if (!log) return;
    if (sample.load !== load().join()) {
      const step = Math.ceil(log.times.length / 1000), chosenStates = (_, i) => Math.floor(i / 21) % step === 0;
      sample = {load: load().join(), times: log.times.filter((_, i) => i % step === 0),
        values: robot.curves(log.states.filter(chosenStates), load())};
    }
    const {times, values} = sample;
    const curve = (c) => values.filter((_, i) => i % 18 === c), way = (c) => curve(c).map((x) => x - values[c]);
    const colours = names.map((_, b) => limbOf(b).colour);
    const joints = names.slice(1).map((name, k) => ({name, points: curve(k), colour: colours[k + 1], strong: false}));
    const peak = ({points}) => Math.max(...points.map(Math.abs));
    for (const joint of joints) { // the chosen one and the largest of each limb
      const larger = joints.some((other) => other.colour === joint.colour && peak(other) > peak(joint));
      joint.strong = joint.name === names[chosen] || !larger;
    }
    const com = [RED, GREEN, BLUE].map((colour, i) => ({name: "xyz"[i], points: way(15 + i), colour, strong: true}));
    const height = $("curves").clientHeight, split = Math.round(height * 0.6);
    const title = "torques at rest, N m; named: the largest of each limb";
    $("curves").innerHTML = chart(title, 20, split - 10, times, joints) +
      chart("way of the centre of mass, m", split + 20, height - 8, times, com) + `<path id="now" d="M0,0V${height}"/>`;
    showTime();
  }
  function showTime() {
    if (!log) return;
    $("scrub").value = String(time);
    $("time").textContent = `${fixed(time, 2)} of ${fixed(Number($("scrub").max), 2)} s`;
    $("now").style.transform = `translateX(${across(time)}px)`;
  }

  // The buttons, keys and files.
  function set(next) {
    play(false);
    state = {...state, ...next};
    change();
    drawCurves();
  }
  const pose = (q) => () => set({values: [...q, ...wrench()]});
  const view = () => scene.look([report.com[0], report.com[1], report.com[2] + 0.18], [3, -1.6, 0.7]);
  const close = () => { play(false); log = null; $("log").hidden = true; };
  const reset = () => { close(); set(FIRST); view(); };
  const clicks = {zero: pose(ZERO), greeting: pose(model.greeting), hanging: pose(HANGING), reset, close,
    play: () => play(!playing), example: () => open($("example-log").textContent.trim(), "example-log.csv")};
  for (const [id, onclick] of Object.entries(clicks)) Object.assign($(id), {onclick});
  for (const button of /** @type {any} */ (document.querySelectorAll(".copy"))) {
    button.onclick = async () => {
      const was = button.textContent, write = async () => navigator.clipboard.writeText(toText(button.value));
      button.textContent = await write().then(() => "Copied", () => "Not allowed");
      setTimeout(() => { button.textContent = was; }, 1200);
    };
  }
  const openFile = async ([file]) => { if (file) open(await file.text(), file.name); };
  for (const id of ["inertia", "table", "texts"]) $(id).ontoggle = show;
  $("scrub").oninput = () => { play(false); seek(Number($("scrub").value)); };
  $("file").onchange = () => openFile($("file").files);
  addEventListener("dragover", (event) => event.preventDefault());
  addEventListener("drop", (/** @type {any} */ event) => {
    event.preventDefault();
    openFile(event.dataTransfer.files);
  });
  addEventListener("popstate", restore);
  new ResizeObserver(drawCurves).observe($("curves"));
  $("summary").textContent = `${fixed(report.mass, 3)} kg, 16 bodies, 21 degrees of freedom`;
  if (location.hash) restore();
  history.replaceState(null, "", address());
  show();
  view();
  Object.assign(window, {page: {code, scene, open, set, show}}); // for tests
}

const refuse = (what) => document.body.replaceChildren(
  make("p", {id: "message"}, `This page needs ${what}, which this browser does not offer.`));
if (typeof WebAssembly === "undefined") refuse("WebAssembly");
else if (!document.createElement("canvas").getContext("webgl")) refuse("WebGL");
else lumo().then(run, () => refuse("WebAssembly"));
