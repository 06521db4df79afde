// The search that most tests look at. Cameras 1 and 4 share an address, 5 tells a part of itself, 6 sends a picture
// under a text that names no camera.
import {camera} from './harness.mjs';

export const kHostile = `<img src=x onerror="alert(1)"></script><script>alert(2)</script>`;

export const scenario = {
  speed: 4,
  cameras: [
    camera(1, {model: 'Beta', ip: '10.0.0.20'}),
    camera(2, {model: 'Alpha', ip: '10.0.0.3', vendor: 'South', dhcpMode: 0}),
    camera(3, {
      model: `\u202e${kHostile}`,
      ip: '10.0.0.100',
      vendor: kHostile,
      vendorTypeMask: '0x4000',
      plugins: ['ONVIF IPC']
    }),
    camera(4, {model: 'Delta', ip: '10.0.0.20', vendor: 'South', present: false}),
    camera(5, {present: false}),
    camera(6, {present: false, text: 'no such camera'}),
  ],
  events: [
    {atMs: 100, camera: 'Camera 5', event: 'assembled'},
    {atMs: 200, camera: 'Camera 4', event: 'found'},
    {atMs: 300, camera: 'Camera 2', event: 'changed', set: {firmware: '2.0'}},
    {atMs: 400, camera: 'Camera 1', event: 'picture'},
    {atMs: 500, camera: 'Camera 2', event: 'picture'},
    {atMs: 600, camera: 'Camera 6', event: 'picture'},
    {atMs: 700, camera: 'Camera 1', event: 'values', values: [1, 2]},
    {atMs: 800, camera: 'Camera 1', event: 'values', values: [3, 'GREATEST']},
    {atMs: 900, camera: 'Camera 3', event: 'gone'},
  ],
};
