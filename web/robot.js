// @ts-check
"use strict";

/** @typedef {{name: string, mass: number, position: number[], rotation: number[], com: number[]}} BodyReport
 * @typedef {{mass: number, com: number[], bodies: BodyReport[], joints: {torque: number}[],
 *   generalized_mass: number[][]}} Report as lumo-inspect writes it
 * @typedef {{q: number[], wrench: number[], loaded: number, base: number}} State with a wrench on the body `loaded`
 * @typedef {{times: number[], states: Float32Array, step: number, some: Float32Array}} Log every step-th state is in
 *   `some`, for the curves */

/** @type {(id: string) => any} */
const $ = (id) => document.getElementById(id);
const ROOT = ["x", "y", "z", "roll", "pitch", "yaw"], WRENCH = ["fx", "fy", "fz", "tx", "ty", "tz"];
const RED = "#d0473f", GREEN = "#3f9a4a", BLUE = "#3f6fd0", ACCENT = "#c2203a", GREY = "#8d96a3";
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
  const lines = csv.trimEnd().split(/\r?\n/), names = lines[0].split(",").map((name) => name.trim());
  const columns = names.map((name) => known.indexOf(name)), count = lines.length - 1;
  names.forEach((name, c) => name === "time" || columns[c] >= 0 || fail(1, c, `: there is no joint "${name}"`));
  if (!names.includes("time")) throw Error("line 1: the column \"time\" is missing");
  if (!count) throw Error("line 2: there is no row of values");
  const times = [], states = new Float32Array(count * known.length);
  for (let i = 0; i < count; ++i) {
    const cells = lines[i + 1].split(",");
    states.set(ZERO, i * known.length);
    names.forEach((name, c) => {
      const cell = cells[c] || "", value = Number(cell);
      if (c >= cells.length) fail(i + 2, c, ` (${name}): the value is missing`);
      const good = cell.trim() && (columns[c] < 0 ? Number.isFinite(value) : usable(value));
      if (!good) fail(i + 2, c, ` (${name}): "${cell}" is not a usable number`);
      if (value < times[i - 1] && columns[c] < 0) fail(i + 2, c, " (time): the time runs backwards");
      if (columns[c] < 0) times.push(value);
      else states[i * known.length + columns[c]] = value;
    });
  }
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
  const corners = model.links.filter(([body]) => body === 0).map(([, end]) => end), torso = new THREE.Geometry();
  torso.vertices = corners.map(() => vector());
  torso.faces = [[0, 1, 2], [0, 1, 3], [0, 2, 3], [1, 2, 3]].map((face) => new THREE.Face3(...face));
  const side = new THREE.MeshBasicMaterial({...glass, color: bodies[0].look.color, side: THREE.DoubleSide});
  add(scene, torso, side, [1, 1, 1], 0).frustumCulled = false;
  const accent = new THREE.MeshLambertMaterial({color: ACCENT}), com = add(scene, ball, accent, [0.022, 0.022, 0.022]);
  const plumb = add(scene, cylinder, accent, [0.0025, 1, 0.0025]);
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
    corners.forEach((b, i) => torso.vertices[i].set(...report.bodies[b].position));
    torso.verticesNeedUpdate = true;
    com.position.set(...report.com);
    between(plumb, report.com, [report.com[0], report.com[1], 0]);
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
    const [x, y] = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1]}[key] || [0, 0];
    const zoom = {"+": 0.9, "=": 0.9, "-": 1.1}[key] || 1, away = camera.position.clone().sub(controls.target);
    const right = vector().crossVectors(up, away).normalize(), over = vector().crossVectors(away, right).normalize();
    if (shiftKey) controls.target.addScaledVector(right, -0.05 * x).addScaledVector(over, -0.05 * y);
    else away.applyAxisAngle(right, Math.abs(away.z) > 0.98 * away.length() && y * away.z > 0 ? 0 : -0.08 * y);
    if (!shiftKey) away.applyAxisAngle(up, 0.08 * x);
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
  /** @type {State} The robot stands on the last body of its leg. */
  const FIRST = {q: model.greeting, wrench: Array(6).fill(0), loaded: 15, base: 10};
  const load = () => [state.loaded, ...state.wrench, state.base];
  const compute = () => /** @type {Report} */ (JSON.parse(robot.report(state.q, load())));
  const copy = (/** @type {State} */ from) => ({...from, q: from.q.map(Math.fround), wrench: [...from.wrench]});
  let state = copy(FIRST), report = compute(), log = /** @type {Log | null} */ (null);
  let chosen = -1, entry = [16, 16], playing = false, time = 0, waiting = false, settled = 0, frame = 0;
  const names = report.bodies.map(({name}) => name), coordinates = [...ROOT, ...names.slice(1)];
  const limbOf = (b) => model.limbs[model.bodies[b].limb], bodyOf = (i) => Math.max(0, i - 5);
  const scene = makeScene(model, choose), say = (what) => { $("message").textContent = what; };

  // The parts of the page with an entry for each coordinate, joint or body.
  const typed = (set) => ({target: {value}}) => {
    if (value === "" || !usable(Number(value))) return;
    play(false);
    set(Math.fround(Number(value)));
    change();
    drawCurves();
  };
  const limbRow = (b, name, ...children) => make("div", {className: "row limb", style: `--limb: ${limbOf(b).colour}`,
    onpointerenter: () => choose(b)}, make("span", {}, name), ...children);
  for (const {name, colour} of model.limbs) {
    const legend = make("legend", {}, name, make("small", {}, name === "torso" ? " m, rad" : " rad"));
    $("state").append(make("fieldset", {className: "limb", style: `--limb: ${colour}`}, legend));
  }
  const sliders = coordinates.map((name, i) => {
    const most = i < 3 ? 2 : 3.14, body = bodyOf(i), both = {step: 0.01, ariaLabel: `${name}, ${i < 3 ? "m" : "rad"}`,
      oninput: typed((x) => { state.q[i] = x; }), onfocus: () => choose(body)};
    const range = make("input", {type: "range", min: -most, max: most, ...both, id: `range-${name}`});
    const number = make("input", {type: "number", ...both, id: name});
    const row = limbRow(body, name, range, number);
    $("state").children[model.bodies[body].limb].append(row);
    return {row, range, number};
  });
  const torques = names.slice(1).map((name, k) => {
    const value = make("output", {id: `torque-${name}`}), bar = make("i");
    const row = limbRow(k + 1, name, make("div", {className: "bar"}, bar), value);
    $("torques").append(row);
    return {row, bar, value};
  });
  const forces = WRENCH.map((name, i) => {
    const oninput = typed((x) => { state.wrench[i] = x; });
    const input = make("input", {type: "number", step: i < 3 ? 1 : 0.1, id: name, oninput});
    $("forces").append(make("label", {}, `${name}, ${i < 3 ? "N" : "N m"}`, input));
    return input;
  });
  for (const id of ["base", "loaded"]) {
    $(id).append(...names.map((name, b) => make("option", {value: b}, name)));
    $(id).oninput = typed((b) => { state[id] = b; });
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
    const fill = (input, value) => { if (document.activeElement !== input) input.value = value; };
    sliders.forEach(({range, number}, i) => {
      range.value = String(state.q[i]);
      fill(number, Number(state.q[i].toFixed(4)));
    });
    forces.forEach((input, i) => fill(input, shortest(state.wrench[i])));
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
  /** Shows the state in the next picture. When it has not changed for a while, it becomes the address, and the earlier
   * one stays in the history of the browser. */
  function change() {
    if (!waiting) requestAnimationFrame(() => { waiting = false; show(); });
    waiting = true;
    clearTimeout(settled);
    if (!playing) settled = window.setTimeout(settle, 300);
  }
  function settle() { if (address() !== location.hash) history.pushState("changed", "", address()); }
  function choose(body) {
    if (body === chosen) return;
    chosen = body;
    sliders.forEach(({row}, i) => row.classList.toggle("chosen", bodyOf(i) === body));
    torques.forEach(({row}, k) => row.classList.toggle("chosen", k + 1 === body));
    scene.mark(body);
    showBody();
    drawCurves();
  }
  function showBody() {
    $("body").replaceChildren();
    if (chosen < 0) return;
    const {name, mass, position: p, rotation: R} = report.bodies[chosen];
    const line = (title, values) =>
      make("tr", {}, make("th", {}, title), ...values.map((x) => make("td", {}, fixed(x, 3))));
    $("body").style.setProperty("--limb", limbOf(chosen).colour);
    $("body").append(make("b", {}, name), make("table", {}, line("mass, kg", [mass]), ...[0, 3, 6].map((i) =>
      line(i ? "" : "pose, m", [...R.slice(i, i + 3), p[i / 3]])),
    ...(chosen ? [line("axis", [R[2], R[5], R[8]])] : [])));
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
    const way = {ArrowLeft: [0, -1], ArrowRight: [0, 1], ArrowUp: [-1, 0], ArrowDown: [1, 0]}[event.key];
    if (!way) return;
    event.preventDefault();
    pick(entry[0] + way[0], entry[1] + way[1]);
  };

  function address() {
    const {q, wrench, loaded, base} = state, angles = coordinates.map((name, i) => `${name}=${shortest(q[i])}`);
    const force = wrench.some(Boolean) ? [`wrench=${names[loaded]},${list(wrench)}`] : [];
    const moved = angles.filter((_, i) => i > 5 && q[i]);
    return "#" + [`root=${list(q.slice(0, 6))}`, ...moved, ...force, `base=${names[base]}`].join("&");
  }
  /** Sets the state of the address. Throws an Error if it is wrong. */
  function restore() {
    const next = {...FIRST, q: Array(21).fill(0)};
    for (const part of decodeURIComponent(location.hash.slice(1)).split("&").filter(Boolean)) {
      const [name, ...words] = part.split(/[=,]/), i = coordinates.indexOf(name), body = names.indexOf(words[0]);
      const numbers = words.slice(["wrench", "base"].includes(name) ? 1 : 0).map((word) => word ? Number(word) : NaN);
      const count = {root: 6, wrench: body < 0 ? -1 : 6, base: body < 0 ? -1 : 0}[name];
      if (numbers.length !== (count === undefined && i > 5 ? 1 : count) || !numbers.every(usable)) {
        throw Error(`The address is wrong at "${part}".`);
      }
      if (name === "base") next.base = body;
      else if (name === "wrench") Object.assign(next, {loaded: body, wrench: numbers.map(Math.fround)});
      else next.q.splice(Math.max(i, 0), numbers.length, ...numbers);
    }
    state = copy(next);
  }
  /** The state, or the table of the poses, for use elsewhere. @param {string} id */
  function toText(id) {
    if (id === "Link") return location.href.replace(/#.*|$/, address());
    if (id === "CSV") return [["body", ...columns], ...report.bodies.map((b) => [b.name, list(rowOf(b))])].join("\n");
    const acting = new Map([[state.loaded, state.wrench]]), root = state.q.slice(0, 6);
    if (state.base) acting.set(state.base, robot.baseWrench());
    const wrenches = [...acting].filter(([, wrench]) => wrench.some(Boolean));
    const moved = coordinates.map((name, i) => ({name, x: state.q[i]})).filter(({x}, i) => i > 5 && x);
    if (id === "Command") {
      const joints = moved.map(({name, x}) => ` --joint ${name}=${shortest(x)}`);
      joints.push(...wrenches.map(([b, wrench]) => ` --wrench ${names[b]}=${list(wrench)}`));
      return `lumo-inspect --pose zero --root ${list(root)}${joints.join("")}`;
    }
    const cpp = id === "C++", float = (x) => cpp && /[.e]/.test(shortest(x)) ? `${shortest(x)}F` : shortest(x);
    const floats = (values) => (cpp ? "{*}" : "[*]").replace("*", values.map(float).join(", "));
    const key = (kind, name) => cpp ? `robot->get${kind}Id("${name}")` : `"${name}"`;
    const {position: p, rotation: R} = report.bodies[0];
    const rows = [0, 3, 6].map((i) => floats([...R.slice(i, i + 3), p[i / 3]])).join(", ");
    const pose = cpp ? `OX::Math::transformFromPosition6D(${floats(root)})` : `[${rows}, [0, 0, 0, 1]]`;
    return [`setRootPose(${pose})`,
      ...moved.map(({name, x}) => `setJointAnglePos(${key("JointAngle", name)}, ${float(x)})`),
      ...wrenches.map(([b, wrench]) => `setExternalWrench(${key("Body", names[b])}, ${floats(wrench)})`),
      "computeFwdKinematics()", "computeGeneralizedMass()", "computeInverseDynamics()",
    ].map((call) => cpp ? `robot->${call};` : `robot.${call}`).join("\n");
  }

  /** Opens a log and plays it. @param {string} csv @param {string} file */
  function open(csv, file) {
    try {
      const {times, states} = readLog(csv, coordinates), step = Math.ceil(times.length / 4000);
      const some = states.filter((_, i) => Math.floor(i / 21) % step === 0);
      log = {times, states, step, some};
    } catch (error) { return say(`${file}: ${/** @type {Error} */ (error).message}.`); }
    say("");
    $("log").hidden = false;
    Object.assign($("scrub"), {min: log.times[0], max: log.times[log.times.length - 1]});
    seek(log.times[0]);
    drawCurves();
    return play(true);
  }
  /** Shows the last row that is not later. @param {number} to */
  function seek(to) {
    if (!log) return;
    const later = log.times.findIndex((t) => t > to), row = later < 0 ? log.times.length - 1 : Math.max(0, later - 1);
    time = to;
    state = {...state, q: [...log.states.subarray(21 * row, 21 * row + 21)]};
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
  const plot = document.createElement("canvas"), pen = /** @type {any} */ (plot.getContext("2d"));
  const LEFT = 44, RIGHT = 100;
  let across = (t) => t; // the place of a time
  /** Draws curves, each with the name and colour of its line, over the points of time. */
  function drawChart(title, top, bottom, times, lines) {
    const all = lines.flatMap(({points}) => points), right = across(times[times.length - 1]), taken = [];
    const [low, high] = all.reduce(([a, b], value) => [Math.min(a, value), Math.max(b, value)], [0, 1e-3]);
    const y = (value) => top + (bottom - top) * (high - value) / (high - low), last = (points) => points.slice(-1)[0];
    Object.assign(pen, {fillStyle: getComputedStyle($("curves")).color, globalAlpha: 0.65, textAlign: "right"});
    for (const value of [0, low, high]) {
      if (value === 0 || Math.abs(y(value) - y(0)) > 11) pen.fillText(Number(value.toPrecision(2)), LEFT - 6, y(value));
      pen.fillRect(LEFT, y(value), right - LEFT, 0.5);
    }
    pen.textAlign = "left";
    pen.fillText(title, LEFT, top - 10);
    lines.sort((a, b) => Number(b.strong) - Number(a.strong) || Math.abs(last(b.points)) - Math.abs(last(a.points)));
    for (const {name, colour, points, strong} of lines) {
      const globalAlpha = strong || chosen < 1 ? 1 : 0.55;
      let at = y(last(points));
      while (strong && taken.some((other) => Math.abs(other - at) < 11)) at -= 1;
      Object.assign(pen, {strokeStyle: colour, fillStyle: colour, lineWidth: strong ? 2.5 : 1.2, globalAlpha});
      pen.beginPath();
      points.forEach((value, i) => pen.lineTo(across(times[i]), y(value)));
      pen.stroke();
      if (!taken.some((other) => Math.abs(other - at) < 11)) pen.fillText(name, right + 6, at);
      taken.push(at);
    }
  }
  /** Draws all curves on a canvas of their own. A picture only adds the time. */
  function drawCurves() {
    if (!log) return;
    const {clientWidth: width, clientHeight: height} = $("curves"), split = Math.round(height * 0.6);
    const {times, step, some} = log, values = robot.curves(some, load()), span = Number($("scrub").max) - times[0] || 1;
    across = (t) => LEFT + (width - LEFT - RIGHT) * (t - times[0]) / span;
    const size = {width: width * devicePixelRatio, height: height * devicePixelRatio};
    for (const sheet of [$("curves"), plot]) Object.assign(sheet, size);
    pen.scale(devicePixelRatio, devicePixelRatio);
    Object.assign(pen, {font: "11px system-ui, Arial, sans-serif", textBaseline: "middle"});
    const rows = times.filter((_, i) => i % step === 0), curve = (c) => values.filter((_, i) => i % 18 === c);
    const torque = (name, k) => ({name, points: curve(k), colour: limbOf(k + 1).colour, strong: k + 1 === chosen});
    const way = (c) => curve(c).map((x) => x - values[c]);
    const com = (colour, i) => ({name: "xyz"[i], points: way(15 + i), colour, strong: true});
    drawChart("torques at rest, N m", 20, split - 10, rows, names.slice(1).map(torque));
    drawChart("way of the centre of mass, m", split + 20, height - 8, rows, [RED, GREEN, BLUE].map(com));
    showTime();
  }
  function showTime() {
    if (!log) return;
    const canvas = $("curves"), sheet = canvas.getContext("2d");
    sheet.clearRect(0, 0, canvas.width, canvas.height);
    sheet.drawImage(plot, 0, 0);
    sheet.fillStyle = GREY;
    sheet.fillRect(across(time) * devicePixelRatio, 0, devicePixelRatio, canvas.height);
    $("scrub").value = String(time);
    $("time").textContent = `${fixed(time, 2)} of ${fixed(Number($("scrub").max), 2)} s`;
  }

  // The buttons, keys and files.
  const set = (next) => { play(false); state = copy({...state, ...next}); change(); };
  const view = (...from) => scene.look([report.com[0], report.com[1], report.com[2] + 0.18], from);
  const go = () => {
    play(false);
    say("");
    try {
      if (location.hash) restore();
    } catch (error) { say(/** @type {Error} */ (error).message); }
    change();
    drawCurves();
  };
  const undo = () => { if (history.state === "changed") history.back(); };
  const close = () => { play(false); log = null; $("log").hidden = true; };
  const reset = () => { close(); set(FIRST); view(3, -1.6, 0.7); };
  const clicks = {zero: () => set({q: ZERO}), greeting: () => set({q: FIRST.q}), hanging: () => set({q: HANGING}), undo,
    reset, close, play: () => play(!playing),
    example: () => open($("example-log").textContent.trim(), "example-log.csv")};
  for (const [id, onclick] of Object.entries(clicks)) Object.assign($(id), {onclick});
  for (const button of /** @type {any} */ (document.querySelectorAll(".copy"))) {
    button.onclick = async () => {
      const was = button.textContent, write = async () => navigator.clipboard.writeText(toText(button.value));
      button.textContent = await write().then(() => "Copied", () => "Not allowed");
      setTimeout(() => { button.textContent = was; }, 1200);
    };
  }
  const openFile = async (/** @type {File[]} */ [file]) => { if (file) open(await file.text(), file.name); };
  for (const id of ["inertia", "table", "texts"]) $(id).ontoggle = show;
  $("scrub").oninput = () => { play(false); seek(Number($("scrub").value)); };
  $("file").onchange = () => openFile($("file").files);
  addEventListener("keydown", ({ctrlKey, key}) => ctrlKey && key === "z" && undo());
  addEventListener("dragover", (event) => event.preventDefault());
  addEventListener("drop", (event) => {
    event.preventDefault();
    openFile([...(event.dataTransfer ? event.dataTransfer.files : [])]);
  });
  addEventListener("popstate", go);
  new ResizeObserver(drawCurves).observe($("curves"));
  $("summary").textContent = `${fixed(report.mass, 3)} kg, 16 bodies, 21 degrees of freedom`;
  go();
  history.replaceState(null, "", address());
  show();
  view(3, -1.6, 0.7);
  Object.assign(window, {page: {code, scene, open, set, show}}); // for tests
}

const refuse = (what) => document.body.replaceChildren(
  make("p", {id: "message"}, `This page needs ${what}, which this browser does not offer.`));
if (typeof WebAssembly === "undefined") refuse("WebAssembly");
else if (!document.createElement("canvas").getContext("webgl")) refuse("WebGL");
else lumo().then(run, () => refuse("WebAssembly"));
