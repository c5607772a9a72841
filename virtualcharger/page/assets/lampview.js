// The lamp as a picture: a lens that has the lamp's plain colour, and its glow on the housing.

import { encode, Light } from "./lamp.js";
import { fitCanvas, onFrame } from "./frames.js";
import { el } from "./dom.js";

const kTurn = 2 * Math.PI;
// Below this height the lens takes the room of its glow.
const kSmall = 150;

export function lampView(root) {
  const canvas = el("canvas", { className: "lens", role: "img", "aria-label": "The lamp" });
  root.append(canvas);
  const context = canvas.getContext("2d");
  const still = matchMedia("(prefers-reduced-motion: reduce)");
  const light = new Light();
  let size = [0, 0];
  let drawn = "";

  fitCanvas(canvas, (width, height) => {
    size = [width, height];
    drawn = "";
  });

  const draw = (colour) => {
    const [width, height] = size;
    const [x, y] = [width / 2, height / 2];
    const radius = Math.min(width, height) * (height < kSmall ? 0.38 : 0.27);
    context.clearRect(0, 0, width, height);
    if (colour && !still.matches) glow(context, x, y, radius, colour);
    housing(context, x, y, radius);
    disc(context, x, y, radius, colour ? `rgb(${colour.join()})` : "#1d2126");
    if (!colour) unknown(context, x, y);
  };

  onFrame((from, to) => {
    const means = light.mean(from, to);
    const colour = means && means.map(encode);
    // Who checks the lamp needs the time that the frame stands for.
    canvas.frame = { from, to, colour };
    const key = String(colour);
    if (key === drawn) return;
    drawn = key;
    draw(colour);
  });

  return {
    canvas,
    link: ({ status }) => status === "lost" && light.forget(),
    hello: () => light.forget(),
    lamp: (message) => light.replace(message),
  };
}

function glow(context, x, y, radius, colour) {
  const strength = Math.max(...colour) / 255;
  if (strength === 0) return;
  const shade = (alpha) => `rgba(${colour.join()},${alpha * strength * strength})`;
  const gradient = context.createRadialGradient(x, y, radius * 0.9, x, y, radius * 1.85);
  gradient.addColorStop(0, shade(0.55));
  gradient.addColorStop(0.35, shade(0.2));
  gradient.addColorStop(1, shade(0));
  context.fillStyle = gradient;
  context.fillRect(x - 2 * radius, y - 2 * radius, 4 * radius, 4 * radius);
}

function disc(context, x, y, radius, colour) {
  context.fillStyle = colour;
  circle(context, x, y, radius);
  context.fill();
  // The lens bends away at its rim; its middle stays plain.
  const rim = context.createRadialGradient(x, y, radius * 0.72, x, y, radius);
  rim.addColorStop(0, "rgba(0,0,0,0)");
  rim.addColorStop(1, "rgba(0,0,0,0.38)");
  context.fillStyle = rim;
  context.fill();
  context.strokeStyle = "rgba(255,255,255,0.16)";
  context.lineWidth = 1;
  context.stroke();
}

function housing(context, x, y, radius) {
  context.fillStyle = "#08090b";
  circle(context, x, y, radius * 1.09);
  context.fill();
  context.strokeStyle = "#343a42";
  context.lineWidth = 1.5;
  context.stroke();
}

function unknown(context, x, y) {
  context.fillStyle = "#aab1ba";
  context.font = "13px system-ui, sans-serif";
  context.textAlign = "center";
  context.textBaseline = "middle";
  context.fillText("not known", x, y);
}

function circle(context, x, y, radius) {
  context.beginPath();
  context.arc(x, y, radius, 0, kTurn);
}
